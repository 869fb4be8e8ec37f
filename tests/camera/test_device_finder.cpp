#include "platform/camera/device_finder.h"

#include <gtest/gtest.h>
#include <linux/videodev2.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <future>

#include "platform/camera/capture.h"
#include "platform/camera/device_views.h"
#include "platform/camera/node_scan.h"
#include "platform/camera/v4l2_node.h"
#include "tools/record/list.h"

using handset::CameraKind;
using handset::CameraTrouble;
using handset::DeviceView;
using handset::FoundCamera;
using handset::V4l2Answers;

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t captures = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;

std::vector<handset::RateRange> at(int rate) {
  return {{{rate, 1}, {rate, 1}}};
}

V4l2Answers webcam(int number, const std::string& name, const std::string& serial, const std::string& bus,
                   std::uint32_t format = V4L2_PIX_FMT_YUYV) {
  V4l2Answers answers;
  answers.place = {.node = "/dev/video" + std::to_string(number),
                   .name = name,
                   .bus = bus,
                   .serial = serial,
                   .usb_id = "046d:0825",
                   .usb_device = "/sys/devices/usb1/" + bus.substr(0, bus.find(':')),
                   .index = 0};
  answers.driver = "uvcvideo";
  answers.bus_info = "usb-0000:00:14.0-" + bus;
  answers.capabilities = captures;
  answers.modes = {{format, {640, 480}, at(30)}};
  return answers;
}

DeviceView pipewire_view(const std::string& node, const std::string& label) {
  gst_init(nullptr, nullptr);
  DeviceView view;
  view.label = label;
  view.node = node;
  view.permanent = node.empty() ? label + "-node" : "";
  view.modes = {{{320, 240}, {{handset::CameraWay::Coding::raw, "YUY2", at(30)}}}};
  return view;
}

std::vector<std::string> identities(const std::vector<FoundCamera>& cameras) {
  std::vector<std::string> list;
  for (const FoundCamera& camera : cameras) list.push_back(camera.identity);
  return list;
}

using Names = std::vector<std::string>;

TEST(V4l2Camera, IsANodeThatGivesPictures) {
  const V4l2Answers good = webcam(0, "HD Webcam: HD Web", "1A2B", "1:1.0");
  const auto camera = handset::camera_of(good, {});
  ASSERT_TRUE(camera);
  EXPECT_EQ(camera->label, "HD Webcam");
  EXPECT_TRUE(camera->usable() && camera->direct);
  EXPECT_EQ(camera->kind, CameraKind::color);
  EXPECT_EQ(camera->modes.size(), 1U);

  const auto with_caps = [&](std::uint32_t caps) {
    V4l2Answers other = good;
    other.capabilities = caps;
    return handset::camera_of(other, {}).has_value();
  };
  EXPECT_TRUE(with_caps(V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING));
  EXPECT_FALSE(with_caps(V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING));
  EXPECT_FALSE(with_caps(V4L2_CAP_VIDEO_M2M_MPLANE | V4L2_CAP_STREAMING));
  EXPECT_FALSE(with_caps(V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_STREAMING));
  EXPECT_FALSE(with_caps(captures | V4L2_CAP_IO_MC)) << "a part of a camera";
}

TEST(V4l2Camera, IsOfAKind) {
  const auto kind = [](const std::string& name, std::uint32_t format, const char* driver = "uvcvideo") {
    V4l2Answers answers = webcam(0, name, "", "1:1.0", format);
    answers.driver = driver;
    return handset::camera_of(answers, {})->kind;
  };
  EXPECT_EQ(kind("Integrated Camera: Integrated C", V4L2_PIX_FMT_YUYV), CameraKind::color);
  EXPECT_EQ(kind("Integrated Camera: Integrated I", V4L2_PIX_FMT_YUYV), CameraKind::infrared);
  EXPECT_EQ(kind("USB2.0 IR Camera", V4L2_PIX_FMT_MJPEG), CameraKind::infrared);
  EXPECT_EQ(kind("Airy Webcam", V4L2_PIX_FMT_MJPEG), CameraKind::color) << "no word of its own";
  EXPECT_EQ(kind("BRIO", V4L2_PIX_FMT_GREY), CameraKind::infrared);
  EXPECT_EQ(kind("Depth", V4L2_PIX_FMT_Y16), CameraKind::infrared);
  EXPECT_EQ(kind("vivid-000-vid-cap", V4L2_PIX_FMT_YUYV, "vivid"), CameraKind::simulated);
  EXPECT_EQ(kind("OBS", V4L2_PIX_FMT_YUYV, "v4l2 loopback"), CameraKind::loopback);
  // Grey beside color is not filmed in.
  V4l2Answers both = webcam(0, "HD", "", "1:1.0");
  both.modes.push_back({V4L2_PIX_FMT_GREY, {1280, 720}, at(30)});
  EXPECT_EQ(handset::camera_of(both, {})->modes.size(), 1U);
}

TEST(V4l2Camera, SaysWhyItIsNotUsed) {
  V4l2Answers answers = webcam(0, "HD", "", "1:1.0");
  const auto judged = [&] { return handset::camera_of(answers, {.jpeg = true, .h264 = false, .bayer = false}); };
  answers.modes = {{V4L2_PIX_FMT_H264, {640, 480}, at(30)},
                   {V4L2_PIX_FMT_SRGGB8, {640, 480}, at(30)},
                   {V4L2_PIX_FMT_Z16, {640, 480}, at(30)},
                   {V4L2_PIX_FMT_H264, {320, 240}, at(30)},
                   {V4L2_PIX_FMT_YUYV, {641, 480}, at(30)}};
  EXPECT_EQ(judged()->trouble, CameraTrouble::formats);
  EXPECT_EQ(judged()->why, "HD: only formats that cannot be shown (H264, RGGB, Z16, YUYV)");
  answers.modes.clear();
  EXPECT_EQ(judged()->trouble, CameraTrouble::no_picture);
  answers.driver = "v4l2 loopback";
  EXPECT_FALSE(judged()) << "nobody feeds it";
  answers.capabilities = 0;
  answers.error = EACCES;
  EXPECT_EQ(judged()->trouble, CameraTrouble::no_access);
  EXPECT_EQ(judged()->why, "HD: no access (/dev/video0: Permission denied)");
  EXPECT_FALSE(judged()->direct);
  answers.place.index = 1;
  EXPECT_FALSE(judged()) << "the metadata beside a camera";
  answers.place.index = 0;
  answers.error = EBUSY;
  EXPECT_EQ(judged()->trouble, CameraTrouble::busy);
  answers.error = ETIMEDOUT;
  EXPECT_EQ(judged()->trouble, CameraTrouble::no_picture);
  answers.error = ENODEV;
  EXPECT_FALSE(judged()) << "just unplugged";
  answers.error = EACCES;
  answers.place.name = "bcm2835-codec-decode";
  EXPECT_FALSE(judged());
}

/// A piece of sysfs.
class Sysfs : public testing::Test {
 protected:
  void SetUp() override {
    root = fs::temp_directory_path() / ("sysfs-" + std::to_string(getpid()));
    fs::create_directories(root / "class/video4linux");
  }
  void TearDown() override { fs::remove_all(root); }
  void put(const fs::path& file, const std::string& text) const {
    fs::create_directories((root / file).parent_path());
    std::ofstream(root / file) << text << '\n';
  }
  void add_node(const std::string& node, const fs::path& device, const std::string& name, int index) const {
    const fs::path folder = device / "video4linux" / node;
    put(folder / "name", name);
    put(folder / "index", std::to_string(index));
    fs::create_directory_symlink(root / device, root / folder / "device");
    fs::create_directory_symlink(root / folder, root / "class/video4linux" / node);
  }
  fs::path root;
};

TEST_F(Sysfs, TellsWhereANodeIsPluggedIn) {
  const fs::path usb = "devices/pci0000:00/0000:00:14.0/usb3/3-2/3-2.4";
  put(usb / "serial", "1A2B3C");
  put(usb / "idVendor", "046d");
  put(usb / "idProduct", "0825");
  add_node("video2", usb / "3-2.4:1.0", "HD Webcam", 0);
  add_node("video3", usb / "3-2.4:1.0", "HD Webcam", 1);
  add_node("video4", "devices/platform/vivid.0", "vivid-000-vid-cap", 0);
  const handset::V4l2Place place = handset::find_place("/dev/video2", root);
  EXPECT_EQ(place.name, "HD Webcam");
  EXPECT_EQ(place.serial, "1A2B3C");
  EXPECT_EQ(place.usb_id, "046d:0825");
  EXPECT_EQ(place.bus, "0000:00:14.0-2.4:1.0") << "without the number of the bus";
  EXPECT_EQ(handset::find_place("/dev/video3", root).index, 1);
  EXPECT_EQ(handset::find_place("/dev/video3", root).usb_device, place.usb_device);
  EXPECT_EQ(handset::find_place("/dev/video4", root).bus, "vivid.0");
  EXPECT_EQ(handset::find_place("/dev/video4", root).usb_id, "");
  EXPECT_EQ(handset::find_place("/dev/video9", root).name, "video9") << "not there";

  for (const char* name : {"video10", "video9", "video-x", "vbi0", "video", "video1a"}) put(fs::path("dev") / name, "");
  EXPECT_EQ(handset::video_nodes(root / "dev"), (Names{root / "dev/video9", root / "dev/video10"}));
  EXPECT_EQ(handset::video_nodes(root / "nowhere"), Names{});
}

TEST(MergedCameras, HaveOneIdentityEach) {
  // Two equal webcams without serial numbers, two with the same one, and a pair of color and infrared.
  const std::vector<V4l2Answers> nodes = {
      webcam(0, "Cheap", "", "1:1.0"),    webcam(1, "Cheap", "", "2:1.0"),
      webcam(2, "Copy", "0001", "3:1.0"), webcam(3, "Copy", "0001", "4:1.0"),
      webcam(4, "BRIO", "77", "5:1.0"),   webcam(5, "BRIO", "77", "5:1.2", V4L2_PIX_FMT_GREY)};
  const Names expected = {"BRIO@77",         "Cheap@1:1.0",     "Cheap@2:1.0",
                          "Copy@0001@3:1.0", "Copy@0001@4:1.0", "BRIO@77 infrared"};
  EXPECT_EQ(identities(handset::merge_cameras(nodes, {}, {})), expected);
  std::vector<V4l2Answers> backwards(nodes.rbegin(), nodes.rend());
  EXPECT_EQ(identities(handset::merge_cameras(backwards, {}, {})), expected) << "whatever their nodes' numbers";
  EXPECT_EQ(identities(handset::merge_cameras({nodes[2]}, {}, {})), Names{"Copy@0001"});
  EXPECT_EQ(identities(handset::merge_cameras({nodes[0], nodes[0]}, {}, {})), (Names{"Cheap@1:1.0", "Cheap@1:1.0#2"}));
}

TEST(MergedCameras, AreInTheOrderOfPreference) {
  V4l2Answers loopback = webcam(0, "A loopback", "", "video0");
  loopback.driver = "v4l2 loopback";
  V4l2Answers vivid = webcam(1, "A test", "", "vivid.0");
  vivid.driver = "vivid";
  const auto cameras =
      handset::merge_cameras({loopback, vivid, webcam(2, "A grey", "", "1:1.0", V4L2_PIX_FMT_GREY),
                              webcam(3, "A sensor", "", "csi", V4L2_PIX_FMT_SRGGB8), webcam(4, "Webcam", "", "2:1.0")},
                             {}, {});
  EXPECT_EQ(identities(cameras),
            (Names{"Webcam@2:1.0", "A sensor@csi", "A test@vivid.0", "A grey@1:1.0 infrared", "A loopback@video0"}));
}

TEST(MergedCameras, AreListedOnceWhoeverShowsThem) {
  const V4l2Answers node = webcam(0, "HD Webcam", "1A2B", "1:1.0");
  const DeviceView view = pipewire_view("/dev/video0", "HD Webcam (V4L2)");
  DeviceView again = pipewire_view("", "HD Webcam 046d:0825");
  again.usb_id = "046d:0825";
  auto cameras = handset::merge_cameras({node}, {again, view}, {});
  ASSERT_EQ(identities(cameras), Names{"HD Webcam@1A2B"});
  EXPECT_TRUE(cameras[0].direct);
  EXPECT_EQ(cameras[0].modes[0].size.width, 640U) << "the node's own";
  EXPECT_EQ(cameras[0].other_modes[0].size.width, 320U) << "PipeWire's, as a second way";

  V4l2Answers denied = node;
  denied.error = EACCES;
  denied.modes.clear();
  EXPECT_EQ(handset::merge_cameras({denied}, {}, {})[0].trouble, CameraTrouble::no_access);
  cameras = handset::merge_cameras({denied}, {view}, {});
  ASSERT_EQ(identities(cameras), Names{"HD Webcam@1A2B"}) << "under the same name";
  EXPECT_TRUE(cameras[0].usable());
  EXPECT_FALSE(cameras[0].direct);
  EXPECT_EQ(cameras[0].modes[0].size.width, 320U);

  V4l2Answers metadata = webcam(1, "HD Webcam", "1A2B", "1:1.0");
  metadata.capabilities = V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING;
  cameras = handset::merge_cameras({node, metadata}, {pipewire_view("/dev/video1", "HD Webcam (V4L2)")}, {});
  EXPECT_EQ(identities(cameras), Names{"HD Webcam@1A2B"}) << "the kernel knows better";

  // A second node of the same webcam with the same pictures as H.264.
  cameras = handset::merge_cameras({webcam(1, "HD Webcam", "1A2B", "1:1.2", V4L2_PIX_FMT_H264), node}, {}, {});
  ASSERT_EQ(identities(cameras), Names{"HD Webcam@1A2B"});
  EXPECT_EQ(cameras[0].node, "/dev/video0");

  cameras = handset::merge_cameras({}, {pipewire_view("", "Network camera")}, {});
  ASSERT_EQ(identities(cameras), Names{"Network camera@Network camera-node"});
  EXPECT_TRUE(cameras[0].usable());
}

TEST(DeviceViews, AreReadFromTheirProperties) {
  gst_init(nullptr, nullptr);
  const auto read = [](const char* label, const char* text) {
    GstStructure* properties = gst_structure_from_string(text, nullptr);
    DeviceView view = handset::read_view(label, properties);
    gst_structure_free(properties);
    return view;
  };
  const DeviceView webcam = read("HD Webcam (V4L2)",
                                 "p, api.v4l2.path=\"/dev/video2\", node.name=\"v4l2_input.1\", "
                                 "api.v4l2.cap.bus_info=\"usb-0000:00:14.0-1\";");
  EXPECT_EQ(webcam.label, "HD Webcam");
  EXPECT_EQ(webcam.node, "/dev/video2");
  EXPECT_EQ(webcam.former, "HD Webcam (V4L2)@usb-0000:00:14.0-1");
  const DeviceView built_in = read("Built-in",
                                   "p, api.libcamera.path=\"\\\\_SB_.PCI0.LNK1-8:1.0-04f2:b6d9\", "
                                   "api.libcamera.location=front, node.name=\"libcamera_input.1\";");
  EXPECT_EQ(built_in.usb_id, "04f2:b6d9");
  EXPECT_EQ(built_in.location, handset::CameraLocation::front);
  EXPECT_EQ(read("Camera", "p, api.libcamera.path=\"short\";").usb_id, "");
  EXPECT_EQ(handset::read_view("Camera", nullptr).former, "Camera");
}

TEST(NodeScan, DoesNotWaitForAQuestionThatIsNotAnswered) {
  auto release = std::make_shared<std::promise<void>>();
  std::shared_future<void> released = release->get_future().share();
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_TRUE(handset::ask_within(std::chrono::milliseconds(50), true, [released] {
    released.wait();
    return false;
  }));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
  release->set_value();
  EXPECT_FALSE(handset::ask_within(std::chrono::seconds(60), true, [] { return false; }));
}

TEST(NodeScan, AsksAFileThatIsNoVideoNode) {
  const V4l2Answers answers = handset::ask_node(handset::find_place("/dev/null"));
  EXPECT_EQ(answers.error, ENOTTY);
  EXPECT_FALSE(handset::node_is_busy("/dev/null"));
  EXPECT_EQ(handset::ask_node(handset::find_place("/dev/no-such-node")).error, ENOENT);
}

TEST(CameraList, SaysWhatThereIs) {
  V4l2Answers denied = webcam(1, "Denied", "", "2:1.0");
  denied.error = EACCES;
  V4l2Answers hd = webcam(0, "HD", "7", "1:1.0");
  hd.modes.push_back({V4L2_PIX_FMT_YUYV, {1280, 720}, at(10)});
  hd.modes.push_back({V4L2_PIX_FMT_MJPEG, {1280, 720}, {{{30000, 1001}, {30000, 1001}}}});
  EXPECT_EQ(record::describe_cameras(handset::merge_cameras({hd, denied}, {}, {})),
            "  Denied (/dev/video1, Denied@2:1.0)\n"
            "    not used: Denied: no access (/dev/video1: Permission denied)\n"
            "  HD (/dev/video0, HD@7)\n"
            "    1280x720@29.97 MJPEG\n"
            "    640x480@30 YUY2\n");
  EXPECT_EQ(record::describe_cameras({}), "  none\n");
}

TEST(Crop, FillsTheOutputsShapeAboutTheCentre) {
  const auto crop = [](int w, int h, unsigned ow, unsigned oh, double zoom, double pixel_shape = 1) {
    const handset::Crop c = handset::crop_to_fill(w, h, ow, oh, zoom, pixel_shape);
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
  // 16:9 in 1440 x 1080, and 4:3 in the pixels of a PAL disc.
  EXPECT_EQ(crop(1440, 1080, 1280, 720, 1, 4.0 / 3), Pair(0, 0));
  EXPECT_EQ(crop(720, 576, 640, 480, 1, 16.0 / 15), Pair(0, 0));
  EXPECT_EQ(crop(720, 576, 1280, 720, 1, 16.0 / 15), Pair(0, 72));
}

}  // namespace
