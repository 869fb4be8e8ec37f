#include "platform/camera/camera_choice.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <map>

#include "platform/camera/camera_trouble.h"

using handset::CameraChoice;
using handset::CameraKind;
using handset::CameraLocation;
using handset::CameraRoles;
using handset::CameraTrouble;
using handset::FoundCamera;
using handset::Objection;

namespace {

FoundCamera camera(const std::string& name, CameraKind kind = CameraKind::color,
                   CameraTrouble trouble = CameraTrouble::none) {
  FoundCamera c;
  c.identity = name + "@" + name + "1";
  c.label = name;
  c.kind = kind;
  c.trouble = trouble;
  c.why = handset::explain(trouble, name);
  return c;
}

std::pair<int, int> roles(const std::vector<FoundCamera>& found, const char* rear = "", const char* front = "") {
  const CameraRoles r = handset::assign_roles(found, rear, front);
  return {r.rear, r.front};
}

using Pair = std::pair<int, int>;

TEST(CameraRoles, AreRememberedByIdentity) {
  const FoundCamera a = camera("a");
  const FoundCamera b = camera("b");
  const FoundCamera c = camera("c");
  EXPECT_EQ(roles({}), Pair(-1, -1));
  EXPECT_EQ(roles({a}), Pair(0, 0)) << "one camera serves both units";
  EXPECT_EQ(roles({a, b, c}), Pair(0, 1));
  EXPECT_EQ(roles({a, b}, "b@b1", "a@a1"), Pair(1, 0)) << "plugged in the other order";
  EXPECT_EQ(roles({a, b, c}, "c@c1"), Pair(2, 0));
  EXPECT_EQ(roles({a, b}, "gone@1", "b@b1"), Pair(0, 1));
  EXPECT_EQ(roles({a}, "gone@1", "a@a1"), Pair(0, 0));
  EXPECT_EQ(roles({a, b}, "a@a1", "a@a1"), Pair(0, 1)) << "one camera in both places";
}

TEST(CameraRoles, KnowAnIdentityThatIsSpelledOtherwise) {
  std::vector<FoundCamera> twins = {camera("a"), camera("b"), camera("b")};
  twins[1].identity = "b@b1@usb-1";
  twins[2].identity = "b@b1@usb-2";
  EXPECT_EQ(roles(twins, "b@b1"), Pair(1, 0)) << "before the second one was plugged in";
  EXPECT_EQ(roles(twins, "b@b1@usb-2", "b@b1@usb-1"), Pair(2, 1));
  EXPECT_EQ(roles({camera("a"), camera("b")}, "b@b1@usb-2"), Pair(1, 0)) << "the other one is gone";
  EXPECT_EQ(roles({camera("a"), camera("b")}, "b@b12@usb-2"), Pair(0, 1)) << "another serial number";
  std::vector<FoundCamera> renamed = {camera("a"), camera("b")};
  renamed[1].former = {"b (V4L2)@usb-0000:00:14.0-2"};
  EXPECT_EQ(roles(renamed, "b (V4L2)@usb-0000:00:14.0-2"), Pair(1, 0));
}

TEST(CameraRoles, AreForCamerasThatCanFillThem) {
  const FoundCamera broken = camera("broken", CameraKind::color, CameraTrouble::formats);
  const FoundCamera color = camera("color");
  const FoundCamera grey = camera("grey", CameraKind::infrared);
  EXPECT_EQ(roles({broken, color}), Pair(1, 1));
  EXPECT_EQ(roles({color, grey}), Pair(0, 0)) << "infrared is nobody's second camera";
  EXPECT_EQ(roles({color, grey}, "grey@grey1"), Pair(0, 0)) << "not even where it was remembered";
  EXPECT_EQ(roles({grey}), Pair(0, 0));
  EXPECT_EQ(roles({broken, grey}), Pair(1, 1));
  EXPECT_EQ(roles({broken}), Pair(-1, -1));
  std::vector<FoundCamera> tablet = {camera("Front"), camera("Rear")};
  tablet[0].location = CameraLocation::front;
  tablet[1].location = CameraLocation::rear;
  EXPECT_EQ(roles(tablet), Pair(1, 0));
  EXPECT_EQ(roles(tablet, "Front@Front1", "Rear@Rear1"), Pair(0, 1)) << "the user's choice counts more";
}

struct Asked {
  std::map<std::string, Objection> against;
  std::map<std::string, int> times;

  CameraChoice choose(const std::vector<FoundCamera>& cameras, int wanted, int evicted = -1) {
    times.clear();
    return handset::choose_camera(cameras, wanted, evicted, [this](const FoundCamera& c) {
      ++times[c.label];
      return against[c.label];
    });
  }
};

TEST(CameraChoice, PassesOverWhatFailed) {
  const std::vector<FoundCamera> cameras = {camera("A"), camera("B"), camera("IR", CameraKind::infrared),
                                            camera("X", CameraKind::loopback, CameraTrouble::no_picture)};
  Asked asked;
  CameraChoice choice = asked.choose(cameras, 0);
  EXPECT_EQ(choice.index, 0);
  EXPECT_EQ(choice.passed_over, "");

  asked.against["A"] = {CameraTrouble::busy, true, "player"};
  choice = asked.choose(cameras, 0);
  EXPECT_EQ(choice.index, 1);
  EXPECT_EQ(choice.passed_over, "A: in use by another program (player). Using B.");
  EXPECT_EQ(asked.times["A"], 1);

  // Failed a little while ago: better than one that is in use now.
  asked.against["B"] = {CameraTrouble::no_picture, false, ""};
  choice = asked.choose(cameras, 0);
  EXPECT_EQ(choice.index, 1);
  asked.against["A"].now = false;
  choice = asked.choose(cameras, 0);
  EXPECT_EQ(choice.index, 0) << "all have failed: the role decides";
  EXPECT_EQ(choice.passed_over, "");

  asked.against["A"].now = asked.against["B"].now = true;
  choice = asked.choose(cameras, 0);
  EXPECT_EQ(choice.index, -1) << "infrared does not step in for color";
  EXPECT_EQ(choice.trouble, CameraTrouble::busy);
  EXPECT_EQ(choice.why, "A: in use by another program (player)");
  EXPECT_EQ(asked.times["IR"] + asked.times["X"], 0);
}

TEST(CameraChoice, SaysWhyNoneCanBeUsed) {
  Asked asked;
  EXPECT_EQ(asked.choose({}, -1).index, -1);
  EXPECT_EQ(asked.choose({}, -1).trouble, CameraTrouble::none);
  const FoundCamera denied = camera("A", CameraKind::color, CameraTrouble::no_access);
  const CameraChoice none = asked.choose({denied, camera("B", CameraKind::color, CameraTrouble::formats)}, -1);
  EXPECT_EQ(none.trouble, CameraTrouble::no_access);
  EXPECT_EQ(none.why, "A: no access");

  const std::vector<FoundCamera> cameras = {denied, camera("B")};
  EXPECT_EQ(handset::find_evicted(cameras, "A@A1"), 0);
  EXPECT_EQ(handset::find_evicted(cameras, "B@B1"), -1);
  EXPECT_EQ(handset::find_evicted(cameras, ""), -1);
  EXPECT_EQ(asked.choose(cameras, 1, 0).passed_over, "A: no access. Using B.");
}

TEST(CameraNames, AreFoundByAPartThatNoOtherHas) {
  std::vector<FoundCamera> cameras = {camera("HD Webcam"), camera("HD Webcam"), camera("Webcam Pro")};
  cameras[0].identity = "HD Webcam@usb-1";
  cameras[1].identity = "HD Webcam@usb-2";
  std::string complaint;
  int error = 0;
  const auto find = [&](const char* name) {
    complaint.clear();
    error = 0;
    return handset::find_by_name(cameras, name, &complaint, &error);
  };
  EXPECT_EQ(find("webcam pro"), 2);
  EXPECT_EQ(find("PRO"), 2);
  EXPECT_EQ(find("usb-2"), 1);
  EXPECT_EQ(find("HD Webcam@usb-1"), 0);
  EXPECT_EQ(complaint, "");
  EXPECT_EQ(find("hd webcam"), -1);
  EXPECT_EQ(error, EINVAL);
  EXPECT_EQ(complaint, "several cameras are called \"hd webcam\": HD Webcam@usb-1, HD Webcam@usb-2");
  EXPECT_EQ(find("C920"), -1);
  EXPECT_EQ(error, ENODEV);
  EXPECT_NE(complaint.find("Webcam Pro@Webcam Pro1"), std::string::npos) << complaint;
  // A whole name counts more than a part of another's.
  cameras.push_back(camera("Webcam"));
  EXPECT_EQ(find("webcam"), 3);
}

TEST(CameraTrouble, IsRememberedForAWhile) {
  handset::note_camera_failure("a camera", CameraTrouble::busy);
  EXPECT_EQ(handset::recent_camera_failure("a camera"), CameraTrouble::busy);
  EXPECT_EQ(handset::recent_camera_failure("another"), CameraTrouble::none);
  handset::note_camera_failure("a camera", CameraTrouble::no_picture);
  EXPECT_EQ(handset::recent_camera_failure("a camera"), CameraTrouble::no_picture);
  handset::clear_camera_failure("a camera");
  EXPECT_EQ(handset::recent_camera_failure("a camera"), CameraTrouble::none);
  EXPECT_EQ(handset::error_of(CameraTrouble::no_access), EACCES);
  EXPECT_EQ(handset::error_of(CameraTrouble::formats), ENOTSUP);
}

}  // namespace
