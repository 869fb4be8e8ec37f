#include <gtest/gtest.h>

#include "platform/camera/capture.h"
#include "platform/camera/device_finder.h"

using handset::CameraMode;
using handset::CameraRoles;

namespace {

std::vector<CameraMode> modes(const char* caps) {
  gst_init(nullptr, nullptr);
  return handset::camera_modes(handset::CapsPtr::adopt(gst_caps_from_string(caps)).get());
}

TEST(CameraModes, PreferMjpegOnlyWhereRawIsSlow) {
  const auto list = modes(
      "video/x-raw,format=YUY2,width=640,height=480,framerate={30/1,15/1};"
      "video/x-raw,format=YUY2,width=1920,height=1080,framerate=5/1;"
      "video/x-raw,format=YUY2,width=1280,height=720,framerate=10/1;"
      "image/jpeg,width=640,height=480,framerate=30/1;"
      "image/jpeg,width=1280,height=720,framerate=30/1;"
      "image/jpeg,width=1920,height=1080,framerate={60/1,30/1};"
      "video/x-h264,width=3840,height=2160,framerate=30/1");
  ASSERT_EQ(list.size(), 3U);
  EXPECT_EQ(list[0].size.width, 1920U);
  EXPECT_TRUE(list[0].use_jpeg());
  EXPECT_EQ(list[0].rate(), 60);
  EXPECT_EQ(list[1].size.width, 1280U);
  EXPECT_TRUE(list[1].use_jpeg());
  EXPECT_EQ(list[2].size.width, 640U);
  EXPECT_FALSE(list[2].use_jpeg());
}

TEST(CameraModes, RangesBecomeUsualSizesAndUselessModesAreLeftOut) {
  const auto list = modes(
      "video/x-raw,width=[16,1280],height=[16,720],framerate=[0/1,30/1];"
      "video/x-raw,width=2592,height=1944,framerate=2/1;"
      "video/x-raw,width=351,height=289,framerate=30/1");
  std::vector<std::uint32_t> widths;
  for (const CameraMode& mode : list) widths.push_back(mode.size.width);
  EXPECT_EQ(widths, (std::vector<std::uint32_t>{1280, 960, 640, 320}));
}

TEST(CameraRoles, AreRememberedByIdentity) {
  const auto roles = [](std::vector<std::string> found, const char* rear, const char* front) {
    const CameraRoles r = handset::assign_roles(found, rear, front);
    return std::make_pair(r.rear, r.front);
  };
  using Pair = std::pair<int, int>;
  EXPECT_EQ(roles({}, "", ""), Pair(-1, -1));
  EXPECT_EQ(roles({"a"}, "", ""), Pair(0, 0)) << "one camera serves both units";
  EXPECT_EQ(roles({"a", "b", "c"}, "", ""), Pair(0, 1));
  EXPECT_EQ(roles({"a", "b"}, "b", "a"), Pair(1, 0)) << "plugged in the other order";
  EXPECT_EQ(roles({"a", "b", "c"}, "c", ""), Pair(2, 0));
  EXPECT_EQ(roles({"a", "b"}, "gone", "b"), Pair(0, 1));
  EXPECT_EQ(roles({"a"}, "gone", "a"), Pair(0, 0));
}

TEST(Crop, FillsTheOutputsShapeAboutTheCentre) {
  const auto crop = [](int w, int h, unsigned ow, unsigned oh, double zoom) {
    const handset::Crop c = handset::crop_to_fill(w, h, ow, oh, zoom);
    EXPECT_EQ(c.left, c.right);
    EXPECT_EQ(c.top, c.bottom);
    return std::make_pair(c.left, c.top);
  };
  using Pair = std::pair<int, int>;
  EXPECT_EQ(crop(1920, 1080, 1280, 720, 1), Pair(0, 0));
  EXPECT_EQ(crop(1920, 1080, 1920, 1080, 2), Pair(480, 270));
  EXPECT_EQ(crop(640, 480, 1280, 720, 1), Pair(0, 60));
  EXPECT_EQ(crop(1080, 1920, 720, 720, 1), Pair(0, 420));
  EXPECT_EQ(crop(1366, 768, 1280, 720, 1), Pair(0, 0)) << "a fraction of a pixel is no crop";
}

}  // namespace
