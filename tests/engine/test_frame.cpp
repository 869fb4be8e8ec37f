#include "tests/engine/test_frame.h"

#include <algorithm>
#include <fstream>

test_frame::test_frame(std::uint32_t width, std::uint32_t height, std::uint32_t padding, std::uint32_t seed)
    : width_(width), height_(height), stride_((width + 1) / 2 * 2 + padding) {
  memory_.resize(first + (height + height / 2) * std::size_t{stride_} + 128);
  std::minstd_rand random(seed);
  for (auto& byte : memory_) byte = static_cast<std::uint8_t>(random() >> 8);
}

camera_buffer_t test_frame::descriptor() {
  camera_buffer_t buffer{};
  buffer.data = memory_.data() + first;
  buffer.data_size = (height_ + height_ / 2) * std::size_t{stride_};
  buffer.frametype = CAMERA_FRAMETYPE_NV12;
  buffer.nv12 = {height_, width_, stride_, static_cast<std::int64_t>(uv_offset()), stride_};
  return buffer;
}

void test_frame::write(const std::string& base) const {
  const auto plane = [this](const std::string& path, std::size_t offset, std::uint32_t rows) {
    std::ofstream file(path, std::ios::binary);
    file << "P5\n" << stride_ << ' ' << rows << "\n255\n";
    file.write(reinterpret_cast<const char*>(memory_.data() + offset), std::streamsize{stride_} * rows);
  };
  plane(base + "-luma.pgm", first, height_);
  plane(base + "-chroma.pgm", first + uv_offset(), height_ / 2);
}

testing::AssertionResult same_picture(const test_frame& actual, const test_frame& expected) {
  if (actual == expected) return testing::AssertionSuccess();
  const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
  const std::string base = std::string(test->test_suite_name()) + "." + test->name();
  actual.write(base + "-actual");
  expected.write(base + "-expected");
  return testing::AssertionFailure() << actual.width() << "x" << actual.height() << " pictures differ; see " << base
                                     << "-{actual,expected}-{luma,chroma}.pgm in the working directory";
}
