#include <gtest/gtest.h>

#include "platform/camera/camera_mode.h"
#include "platform/camera/device_element.h"

using handset::CameraMode;
using handset::CameraWay;
using handset::CapsPtr;
using handset::ChosenWay;
using handset::Decoders;

namespace {

using Coding = CameraWay::Coding;

std::vector<CameraMode> modes(const char* caps, std::vector<std::string>* refused = nullptr,
                              const Decoders& decoders = {}) {
  gst_init(nullptr, nullptr);
  return handset::camera_modes(CapsPtr::adopt(gst_caps_from_string(caps)).get(), decoders, refused);
}

/// What the only size in the caps is asked for with, without the size.
std::string asked(const char* caps, double wanted = 30) {
  const auto list = modes(caps);
  if (list.size() != 1) return "sizes: " + std::to_string(list.size());
  std::string text = handset::caps_of(handset::choose_way(list[0], wanted), list[0].size);
  const std::string size = ",width=640,height=480";
  return text.replace(text.find(size), size.size(), "");
}

TEST(CameraWays, ComeNearestToTheWantedRate) {
#define RAW "video/x-raw,format=YUY2,width=640,height=480,framerate="
#define JPEG ";image/jpeg,width=640,height=480,framerate="
#define H264 ";video/x-h264,width=640,height=480,framerate="
  const std::string raw = "video/x-raw,format=YUY2,framerate=";
  const std::string jpeg = "image/jpeg,framerate=";
  struct {
    const char* caps;
    std::string asked;
    double wanted = 30;
  } const rows[] = {
      {RAW "{15/1,30/1,5/1}", raw + "30/1"},
      {RAW "{1/1,5/1,60/1,120/1}", raw + "60/1"},
      {RAW "5/1", raw + "5/1"},
      {RAW "{15/1,60/1}", raw + "60/1"},
      {RAW "{24000/1001,15/1}", raw + "24000/1001"},
      {RAW "{30000/1001,25/1,60/1}", raw + "30000/1001"},
      // Raw is left alone as long as it is fluent.
      {RAW "25/1" JPEG "30/1", raw + "25/1"},
      {RAW "30/1" JPEG "{30/1,60/1}" H264 "30/1", raw + "30/1"},
      {RAW "{5/1,20/1}" JPEG "{15/1,30/1}" H264 "30/1", jpeg + "30/1"},
      {RAW "10/1" H264 "30/1", "video/x-h264,framerate=30/1"},
      {RAW "60/1" JPEG "30/1", jpeg + "30/1"},
      {RAW "10/1" JPEG "10/1", raw + "10/1"},
      {RAW "{30/1,60/1}" JPEG "60/1", raw + "60/1", 60},
      {RAW "{30/1,60/1,15/1}", raw + "15/1", 15},
      // Within a range a driver may know steps only.
      {RAW "[1/1,60/1]", raw + "[570/20,30/1]"},
      {RAW "[1/1,25/1]", raw + "25/1"},
      {RAW "[0/1,2147483647/1]", raw + "[570/20,30/1]"},
      {RAW "0/1", "video/x-raw,format=YUY2"},
      {"video/x-raw,format=YUY2,width=640,height=480", "video/x-raw,format=YUY2"},
      {"video/x-bayer,format=rggb,width=640,height=480,framerate=30/1", "video/x-bayer,format=rggb,framerate=30/1"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(asked(row.caps, row.wanted), row.asked) << row.caps;
    EXPECT_TRUE(CapsPtr::adopt(gst_caps_from_string(row.asked.c_str()))) << row.asked;
  }
}

TEST(CameraModes, LeaveOutWhatCannotBeShown) {
  std::vector<std::string> refused;
  const auto list = modes(
      "video/x-raw,format={YUY2,GRAY8},width=640,height=480,framerate=30/1;"
      "video/x-raw,format=YUY2,width=2592,height=1944,framerate=2/1;"
      "video/x-raw,format=YUY2,width=351,height=289,framerate=30/1;"
      "video/x-raw(memory:DMABuf),format=DMA_DRM,width=800,height=600,framerate=30/1;"
      "video/x-h264,width=1920,height=1080,framerate=30/1;"
      "video/x-bayer,format=rggb10le,width=1280,height=720,framerate=30/1;"
      "video/x-vp8,width=320,height=240,framerate=30/1",
      &refused, {.jpeg = true, .h264 = false, .bayer = true});
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].size.width, 2592U) << "slow, but a picture";
  EXPECT_EQ(list[1].ways.size(), 2U);
  EXPECT_EQ(refused, (std::vector<std::string>{"H.264", "Bayer rggb10le", "video/x-vp8"}));

  auto grey = list;
  EXPECT_FALSE(handset::only_grey(grey));
  handset::drop_grey(&grey);
  EXPECT_EQ(grey[1].ways.size(), 1U);
  EXPECT_TRUE(handset::only_grey(modes("video/x-raw,format={GRAY8,GRAY16_LE},width=640,height=360,framerate=15/1")));
  EXPECT_FALSE(handset::only_grey({}));
}

TEST(CameraModes, OfferUsualSizesWhereAnySizeIsPossible) {
  std::vector<std::uint32_t> widths;
  for (const CameraMode& mode : modes("video/x-raw,width=[16,1280],height=[16,720],framerate=[0/1,30/1]"))
    widths.push_back(mode.size.width);
  EXPECT_EQ(widths, (std::vector<std::uint32_t>{1280, 960, 640, 320}));
}

TEST(CameraModes, ServeSizesThatTheyDoNotHave) {
  const auto list = modes(
      "video/x-raw,format=YUY2,width=1280,height=720,framerate=10/1;"
      "image/jpeg,width=1920,height=1080,framerate=30/1;"
      "image/jpeg,width=3840,height=2160,framerate=30/1;"
      "video/x-raw,format=YUY2,width=640,height=480,framerate=30/1");
  const auto width_for = [&](camera_res_t size) { return handset::choose_mode(list, size)->size.width; };
  EXPECT_EQ(width_for({1280, 720}), 1280U) << "asked for, so it is given, slow as it is";
  EXPECT_EQ(width_for({1280, 718}), 1920U);
  EXPECT_EQ(width_for({600, 400}), 640U);
  EXPECT_EQ(width_for({7680, 4320}), 3840U);
  EXPECT_EQ(handset::choose_mode({}, {640, 480}), nullptr);
}

TEST(DeviceElement, SaysWhyItCannotBeBuilt) {
  gst_init(nullptr, nullptr);
  handset::FoundCamera gone;
  std::string error;
  EXPECT_FALSE(handset::make_device_element(gone, 0, {640, 480}, 30, &error));
  EXPECT_NE(error, "");
  // Everything that a node can deliver has its decoder.
  for (const Coding coding : {Coding::raw, Coding::jpeg, Coding::h264, Coding::bayer}) {
    handset::FoundCamera camera;
    camera.node = "/dev/video0";
    camera.direct = true;
    camera.modes = {{{640, 480}, {{coding, coding == Coding::raw ? "YUY2" : "", {}}}}};
    error.clear();
    const auto element = handset::make_device_element(camera, 0, {640, 480}, 30, &error);
    ASSERT_TRUE(element) << error;
    const auto pad = handset::ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(element.get(), "src"));
    const CapsPtr caps = CapsPtr::adopt(gst_pad_query_caps(pad.get(), nullptr));
    EXPECT_TRUE(gst_structure_has_name(gst_caps_get_structure(caps.get(), 0), "video/x-raw"));
  }
}

}  // namespace
