#pragma once

#include <cstdint>

/// A row of the X server's pixels, fetched over a connection of its own. Used by one thread.
class ScreenRow {
 public:
  /// In pixels of the root window.
  ScreenRow(double x, double y, double width);
  ~ScreenRow();
  ScreenRow(const ScreenRow&) = delete;
  ScreenRow& operator=(const ScreenRow&) = delete;

  /// @return false if there is no server, or no such row
  bool fetch();
  /// Of pixel x of the row as it was fetched last.
  int green(int x) const;

 private:
  struct Connection;
  Connection* const connection_;
  const int x_, y_;
  const unsigned width_;
};
