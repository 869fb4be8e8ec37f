#include <gst/gst.h>
#include <gtest/gtest.h>

#include "platform/camera/encoders.h"

namespace {

class Encoders : public testing::Test {
 protected:
  static void SetUpTestSuite() { gst_init(nullptr, nullptr); }
  static std::string prove(const std::string& element, const std::string& settings, camera_res_t size = {320, 240}) {
    return handset::prove_video_encoder({element, "NV12", settings, true}, size, 30);
  }
};

TEST_F(Encoders, AWorkingOneIsFoundForEverySizeThatUnitsList) {
  for (const camera_res_t size : {camera_res_t{16, 16}, camera_res_t{640, 480}, camera_res_t{1920, 1080}}) {
    const handset::VideoEncoder* encoder = handset::proven_video_encoder(size, 30);
    ASSERT_NE(encoder, nullptr) << size.width << "x" << size.height;
    EXPECT_EQ(encoder, handset::proven_video_encoder(size, 30));
  }
  EXPECT_NE(handset::audio_encoder_description(), "");
}

TEST_F(Encoders, OnesThatLieAreFoundOut) {
  EXPECT_EQ(prove("x264enc", "tune=zerolatency"), "");
  EXPECT_EQ(prove("no-such-encoder", ""), "not installed");
  EXPECT_EQ(prove("videobalance", "saturation=0 ! x264enc tune=zerolatency"), "its picture is wrong");
  EXPECT_EQ(prove("identity", "drop-probability=1 ! x264enc tune=zerolatency"), "it swallowed frames");
  EXPECT_EQ(prove("x264enc", "tune=zerolatency insert-vui=false"), "it does not write the colour description");
  EXPECT_NE(prove("identity", "error-after=2 ! x264enc tune=zerolatency"), "");
}

}  // namespace
