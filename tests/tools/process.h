#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

/// A program that a test runs; its standard output and error are collected.
class Process {
 public:
  /// @param prepare  run in the child before the program, for limits
  explicit Process(const std::vector<std::string>& words, const std::function<void()>& prepare = {});
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  /// Kills it.
  ~Process();

  void signal(int number) const;
  /// Waits for its end. @return exit status, or minus the signal that ended it
  int wait();
  const std::string& output() const { return output_; }
  const std::string& errors() const { return errors_; }

 private:
  pid_t pid_ = -1;
  int out_ = -1;
  int err_ = -1;
  std::string output_;
  std::string errors_;
};
