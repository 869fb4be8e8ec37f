#pragma once

#include <string>

/// A test's own folder, removed with everything in it.
class TempDir {
 public:
  TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir();

  const std::string& path() const { return path_; }
  std::string file(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

/// Writes a whole file.
void write_file(const std::string& path, const std::string& content);
std::string read_file(const std::string& path);
