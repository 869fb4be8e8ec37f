#include "camera/rotation.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

const std::vector<int> all_angles = {0, 90, 180, 270};

rotation_inputs_s viewing(bool front) {
  return {.front = front,
          .camera_open = true,
          .mChooseVideoAngle = false,
          .mSeparateVfRotation = false,
          .mVideoRotations = all_angles};
}

rotation_inputs_s recording(bool front, const std::vector<int>& angles = all_angles, bool separate = false) {
  return {.front = front,
          .camera_open = true,
          .mChooseVideoAngle = true,
          .mSeparateVfRotation = separate,
          .mVideoRotations = angles};
}

/// By direction / 90.
struct Expected {
  int capture, window;
};

void expect_viewing(bool front, int vf_angle, const Expected (&expected)[4]) {
  rotation_state_s state{.mVideoAngle = 180, .mVfAngle = vf_angle};
  for (int quarter = 0; quarter < 4; ++quarter) {
    const int direction = 90 * quarter;
    state = update_angles(state, direction, viewing(front)).state;
    const rotation_state_s wanted = {.mDisplayAngle = direction,
                                     .mCaptureAngle = expected[quarter].capture,
                                     .mVideoAngle = 180,
                                     .mVfAngle = vf_angle,
                                     .mWindowAngle = expected[quarter].window,
                                     .mMirror = front};
    EXPECT_EQ(state, wanted) << "front " << front << ", viewfinder " << vf_angle << ", direction " << direction;
  }
}

TEST(Rotation, TurnsOnlyTheWindowWhileViewing) {
  expect_viewing(false, 0, {{0, 0}, {270, 270}, {180, 180}, {90, 90}});
  expect_viewing(true, 0, {{0, 0}, {90, 270}, {180, 180}, {270, 90}});
  expect_viewing(false, 90, {{0, 270}, {270, 180}, {180, 90}, {90, 0}});
  expect_viewing(true, 90, {{0, 90}, {90, 0}, {180, 270}, {270, 180}});
  expect_viewing(true, 270, {{0, 270}, {90, 180}, {180, 90}, {270, 0}});
}

TEST(Rotation, ARecordingTurnsTheStreams) {
  for (const int direction : all_angles) {
    const rotation_state_s rear = update_angles({}, direction, recording(false)).state;
    EXPECT_EQ(rear.mVideoAngle, (360 - direction) % 360);
    EXPECT_EQ(rear.mVfAngle, rear.mVideoAngle);
    EXPECT_EQ(rear.mWindowAngle, 0);
    const rotation_state_s front = update_angles({}, direction, recording(true)).state;
    EXPECT_EQ(front.mVideoAngle, direction);
    EXPECT_EQ(front.mVfAngle, direction);
    EXPECT_EQ(front.mWindowAngle, 0);
    EXPECT_TRUE(front.mMirror);
  }
}

TEST(Rotation, ASeparateViewfinderKeepsItsAngle) {
  const rotation_update_s update = update_angles({.mVfAngle = 180}, 90, recording(false, all_angles, true));
  EXPECT_EQ(update.state.mVideoAngle, 270);
  EXPECT_EQ(update.state.mVfAngle, 180);
  EXPECT_EQ(update.state.mWindowAngle, 90);
  EXPECT_EQ(update.log, "WIN: 90 VF: 180 VID: 270 MIRROR: false");
}

TEST(Rotation, AfterTheRecordingTheWindowFollowsTheStoredStreamAngle) {
  rotation_state_s state = update_angles({}, 90, recording(false)).state;
  const rotation_update_s update = update_angles(state, 0, viewing(false));
  EXPECT_EQ(update.state.mVideoAngle, 270);
  EXPECT_EQ(update.log, "WIN: 90 VF: 270 VID: 270 MIRROR: false");
  EXPECT_EQ(update_angles(state, 0, viewing(true)).log, "WIN: 270 VF: 270 VID: 270 MIRROR: true");
}

TEST(Rotation, AnAngleThatTheCameraLacksLeavesTheRest) {
  const rotation_state_s before = {
      .mDisplayAngle = 0, .mCaptureAngle = 0, .mVideoAngle = 180, .mVfAngle = 90, .mWindowAngle = 270, .mMirror = true};
  rotation_state_s wanted = before;
  wanted.mDisplayAngle = 90;
  wanted.mCaptureAngle = 270;
  for (const std::vector<int>& angles : {std::vector<int>{0, 180}, std::vector<int>{}}) {
    const rotation_update_s update = update_angles(before, 90, recording(false, angles));
    EXPECT_EQ(update.state, wanted);
    EXPECT_EQ(update.log, "video rotation 270 not supported.");
  }
}

TEST(Rotation, WithoutACameraTheStreamsAreUpright) {
  rotation_inputs_s inputs = recording(false, {});
  inputs.camera_open = false;
  const rotation_update_s update = update_angles({.mVideoAngle = 90, .mVfAngle = 90}, 270, inputs);
  EXPECT_EQ(update.log, "WIN: 90 VF: 0 VID: 0 MIRROR: false");
}

}  // namespace
