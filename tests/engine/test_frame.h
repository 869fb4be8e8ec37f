#pragma once

// NV12 pictures with guard bytes, and their comparison.

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "platform/camera/camera.h"

/// An NV12 picture whose rows may be padded. Padding and both ends of the memory hold guard bytes of a
/// fixed random sequence, so that comparing whole memories finds a stray write.
class test_frame {
 public:
  /// @param padding  bytes after each luma and chroma row, on top of the width rounded up to even
  test_frame(std::uint32_t width, std::uint32_t height, std::uint32_t padding, std::uint32_t seed);

  camera_buffer_t descriptor();

  std::uint32_t width() const { return width_; }
  std::uint32_t height() const { return height_; }
  std::uint8_t& luma(std::size_t x, std::size_t row) { return memory_[first + row * stride_ + x]; }
  /// Byte x of a chroma row: U at even x, V at odd x.
  std::uint8_t& chroma(std::size_t x, std::size_t row) { return memory_[first + uv_offset() + row * stride_ + x]; }

  bool operator==(const test_frame& other) const = default;
  /// Writes luma and chroma as PGM pictures, padding included.
  void write(const std::string& base) const;

 private:
  static constexpr std::size_t first = 65;  ///< not even aligned to 2 bytes

  std::size_t uv_offset() const { return height_ * stride_; }

  std::uint32_t width_, height_, stride_;
  std::vector<std::uint8_t> memory_;
};

/// Whether two pictures are equal, guard bytes included; writes both beside the log if not.
testing::AssertionResult same_picture(const test_frame& actual, const test_frame& expected);
