#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "tests/engine/engine_state.h"
#include "tests/engine/overlay_planes.h"
#include "tests/engine/test_frame.h"

namespace {

class ProcessFrame : public testing::Test {
 protected:
  void SetUp() override { reset_engine(); }
  void TearDown() override { reset_engine(); }
};

void process(test_frame& frame) {
  const camera_buffer_t buffer = frame.descriptor();
  process_frame(buffer, buffer);
}

void blend(test_frame& frame, const overlay_planes& planes) {
  const camera_buffer_t buffer = frame.descriptor();
  logo_filter(planes.record, &buffer, &buffer);
}

/// What a colour-keep effect keeps, without the table: the predicate at the block's cell.
bool keeps(std::int32_t effect, int sum, int u, int v, double threshold) {
  constexpr bool (*by_effect[])(std::uint8_t, std::uint8_t, std::uint8_t, double) = {
      color_match_yellow, color_match_blue, color_match_green, color_match_red};
  return by_effect[effect - 8](static_cast<std::uint8_t>(sum / 32 * 8), static_cast<std::uint8_t>(u / 8 * 8),
                               static_cast<std::uint8_t>(v / 8 * 8), threshold);
}

/// The chroma pair that an effect makes of a block; nothing for "as it was".
std::optional<std::pair<int, int>> tinted(std::int32_t effect, int sum, int u, int v, double threshold) {
  switch (effect) {
    case 0:
      return std::pair{300 % 256, 77};
    case 1:
      return std::pair{0, 128};
    case 2:
      return std::pair{200, 0};
    case 3:
      return std::pair{0, 0};
    case 4:
      return std::pair{85, 243};
    case 5:
      return std::pair{110, 140};
    case 7:
      return std::pair{127, 127};
    case -1:
    case 6:
      return std::nullopt;
    default:
      if (keeps(effect, sum, u, v, threshold)) return std::nullopt;
      return std::pair{127, 127};
  }
}

void expect_effect(test_frame& frame, std::int32_t effect, double threshold) {
  for (std::size_t row = 0; row < frame.height() / 2; ++row) {
    for (std::size_t x = 0; x < frame.width(); x += 2) {
      const int sum = frame.luma(x, 2 * row) + frame.luma(x + 1, 2 * row) + frame.luma(x, 2 * row + 1) +
                      frame.luma(x + 1, 2 * row + 1);
      const auto pair = tinted(effect, sum, frame.chroma(x, row), frame.chroma(x + 1, row), threshold);
      if (!pair) continue;
      frame.chroma(x, row) = static_cast<std::uint8_t>(pair->first);
      // Greyscale goes by bytes and stops at an odd width; the others go by pairs.
      if (effect != 7 || x + 1 < frame.width()) frame.chroma(x + 1, row) = static_cast<std::uint8_t>(pair->second);
    }
  }
  if (effect != 6) return;
  for (std::size_t row = 0; row < frame.height(); ++row) {
    for (std::size_t x = 0; x < frame.width(); ++x) frame.luma(x, row) = 110;
  }
}

TEST_F(ProcessFrame, EveryEffectOnFramesOfEveryShape) {
  _u = 300;
  _v = 77 - 256;
  const std::uint32_t sizes[][3] = {{2, 2, 0},    {4, 2, 3},    {64, 48, 0},   {66, 50, 2}, {130, 34, 62},
                                    {129, 33, 5}, {640, 36, 0}, {854, 20, 10}, {4096, 6, 0}};
  for (std::int32_t effect = -1; effect <= 11; ++effect) {
    _cur_camera_filter = effect;
    FilterColorMatch which{};
    if (color_match_for_effect(effect, &which)) filter_init(0.6, which);
    for (const auto& [width, height, padding] : sizes) {
      test_frame actual(width, height, padding, width * 31 + height), expected = actual;
      process(actual);
      expect_effect(expected, effect, 0.6);
      ASSERT_TRUE(same_picture(actual, expected)) << "effect " << effect << ", padding " << padding;
    }
  }
}

TEST_F(ProcessFrame, UnknownEffectsApplyTheCurrentMask) {
  filter_init(0.5, filter_match_blue);
  for (const std::int32_t effect : {12, -5, -2, INT32_MAX, INT32_MIN}) {
    _cur_camera_filter = effect;
    test_frame actual(320, 200, 0, 5), expected = actual;
    process(actual);
    expect_effect(expected, 9, 0.5);
    ASSERT_TRUE(same_picture(actual, expected)) << effect;
  }
}

TEST_F(ProcessFrame, FillsTakeTheSizeFromTheInputAndTheAddressesFromTheOutput) {
  test_frame actual(64, 32, 6, 1), expected = actual;
  const camera_buffer_t output = actual.descriptor();
  camera_buffer_t input = output;
  input.nv12 = {20, 40, 40, 800, 40};
  for (std::int32_t effect : {4, 6, 7, 9}) {
    _cur_camera_filter = effect;
    process_frame(input, output);
  }
  for (std::size_t row = 0; row < 20; ++row) {
    for (std::size_t x = 0; x < 40; ++x) expected.luma(x, row) = 110;
  }
  for (std::size_t row = 0; row < 10; ++row) {
    for (std::size_t x = 0; x < 40; ++x) expected.chroma(x, row) = 127;
  }
  EXPECT_TRUE(same_picture(actual, expected));
}

TEST_F(ProcessFrame, ChromaAddressesUseTheLowHalfOfTheirFields) {
  _cur_camera_filter = 4;
  test_frame actual(64, 32, 6, 1), expected = actual;
  camera_buffer_t buffer = actual.descriptor();
  buffer.nv12.uv_offset |= std::int64_t{5} << 32;
  buffer.nv12.uv_stride |= std::int64_t{-1} << 32;
  process_frame(buffer, buffer);
  expect_effect(expected, 4, 0.5);
  EXPECT_TRUE(same_picture(actual, expected));
}

TEST_F(ProcessFrame, OverlaysAndStampComeInTheirOrder) {
  const overlay_planes logo(40, 40, 1), stamp(32, 16, 2);
  for (const bool own_color : {false, true}) {
    for (const bool include : {false, true}) {
      for (const std::int32_t effect : {-1, 5, 6, 7, 11}) {
        logo_image = logo.record;
        datetime_image = stamp.record;
        filter_init(0.5, filter_match_red);
        _cur_camera_filter = effect;
        _include_logo = include;
        _include_logo_original_color = own_color;
        test_frame actual(64, 64, 0, 3), expected = actual;
        process(actual);
        if (include && !own_color) blend(expected, logo);
        blend(expected, stamp);
        expect_effect(expected, effect, 0.5);
        if (include && own_color) blend(expected, logo);
        ASSERT_TRUE(same_picture(actual, expected)) << effect << ' ' << include << ' ' << own_color;
      }
    }
  }
}

/// The steps one after the other, each over the whole frame.
void process_by_steps(test_frame& frame, const overlay_planes& logo, bool own_color, const overlay_planes& stamp,
                      std::int32_t effect) {
  if (!own_color) blend(frame, logo);
  blend(frame, stamp);
  expect_effect(frame, effect, 0.6);
  if (own_color) blend(frame, logo);
}

TEST_F(ProcessFrame, StripsEqualStepsOverWholeFrames) {
  _u = 300;
  _v = 77 - 256;
  // Frames of several strips and of a part of one; overlays that begin and end within strips or beyond the frame.
  const std::uint32_t sizes[][3] = {{640, 480, 0}, {853, 203, 7}, {1022, 131, 0}, {4096, 35, 64}, {20002, 9, 0}};
  for (const auto& [width, height, padding] : sizes) {
    const auto right = static_cast<std::int32_t>(width), bottom = static_cast<std::int32_t>(height);
    overlay_planes logo((right + 40) & ~3, (bottom + 40) & ~3, width), stamp(232, 44, height);
    logo.record.x = logo.record.y = -18;
    stamp.record.x = right - 201;
    stamp.record.y = bottom - 39;
    for (std::int32_t effect = -1; effect <= 11; ++effect) {
      _cur_camera_filter = effect;
      FilterColorMatch which{};
      if (color_match_for_effect(effect, &which)) filter_init(0.6, which);
      for (const bool own_color : {false, true}) {
        _include_logo_original_color = own_color;
        logo_image = logo.record;
        datetime_image = stamp.record;
        test_frame actual(width, height, padding, width + height), expected = actual;
        process(actual);
        process_by_steps(expected, logo, own_color, stamp, effect);
        ASSERT_TRUE(same_picture(actual, expected)) << "effect " << effect << ", own color " << own_color;
      }
    }
  }
}

TEST_F(ProcessFrame, BlendsAddressBothPicturesAsTheInputSays) {
  const overlay_planes logo(64, 200, 1);
  logo_image = logo.record;
  _cur_camera_filter = 4;
  test_frame actual(1024, 200, 6, 1), expected = actual;
  const camera_buffer_t output = actual.descriptor(), expected_output = expected.descriptor();
  camera_buffer_t input = output, expected_input = expected_output;
  for (camera_buffer_t* narrow : {&input, &expected_input}) narrow->nv12 = {200, 512, 512, 512 * 200, 512};
  process_frame(input, output);
  logo_filter(logo.record, &expected_input, &expected_output);
  apply_color_edit(color_edit_of(4), expected_input, expected_output);
  EXPECT_TRUE(same_picture(actual, expected));
}

TEST_F(ProcessFrame, DisabledRecordsAreNotBlended) {
  const overlay_planes logo(40, 40, 1);
  logo_image = datetime_image = logo.record;
  logo_image.enabled = datetime_image.enabled = false;
  for (const bool own_color : {false, true}) {
    _include_logo_original_color = own_color;
    test_frame actual(64, 64, 0, 3), expected = actual;
    process(actual);
    EXPECT_TRUE(same_picture(actual, expected));
  }
}

TEST_F(ProcessFrame, ScreenRecordingAndBrokenFramesPassUntouched) {
  const overlay_planes logo(40, 40, 1);
  logo_image = datetime_image = logo.record;
  _cur_camera_filter = 4;
  test_frame actual(64, 64, 0, 3), expected = actual;
  camera_buffer_t input = actual.descriptor(), output = input;

  testing::internal::CaptureStderr();
  _screen_recording = true;
  process_frame(input, output);
  input.metadata_size = broken_frame_metadata_size;
  process_frame(input, output);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "the bypass comes before the guard";

  _screen_recording = false;
  testing::internal::CaptureStderr();
  process_frame(input, output);
  process_frame(input, output);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "framesize error\nframesize error\n");
  EXPECT_TRUE(same_picture(actual, expected));

  input.metadata_size = 65535;
  output.metadata_size = broken_frame_metadata_size;
  testing::internal::CaptureStderr();
  process_frame(input, output);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_FALSE(actual == expected) << "only the input's metadata counts, and only that one size";
}

}  // namespace
