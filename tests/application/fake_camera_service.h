#pragma once

// A camera service for the application's tests: every function of platform/camera/camera.h that the application and the
// engine call, on units that a test describes, with faults on request and a journal of the calls.
//
// A journal line is the call's name and its arguments without the handle:
//
//   open 2 31 | close | has_feature 8 | get_sizes 0 | get_rotations 0 | get_vf 0 | get_video 6 | get_zoom_limits
//   set_video 1=1280 2=720 | set_vf 1=1280 2=720 11=group 12=cameraViewfinder | focus 5 | scene 1 | light 1 | zoom 8
//   smooth start_vf 123 | enable | disable | roll_open 256 0 | start_video /roll/VID_1.mp4 | stop_video | roll_close
//   101 | hold_video 1
//
// "without camera" ends the line of a call whose handle is not open; such a call fails with EBADF. Fetching and
// returning frames and the count of users are not written down. Any thread.

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/camera/camera.h"

namespace fake_camera {

/// What a unit is when it is opened.
struct unit_s {
  std::vector<camera_res_t> sizes{{640, 480}, {1280, 720}, {1920, 1080}, {3264, 2448}};
  std::vector<int> rotations{0, 90, 180, 270};
  std::set<int> features{CAMERA_FEATURE_ZOOM, CAMERA_FEATURE_FOCUS, CAMERA_FEATURE_STABILIZATION, CAMERA_FEATURE_VIDEO,
                         CAMERA_FEATURE_SHARED_ROTATION};
  int video_rotation = 0;
  int vf_rotation = 0;
  int zoom_min = 0;
  int zoom_max = 120;
  bool lamp = false;  ///< its light is one
};

/// Closes everything and resets: the units are as above, the rear one has a light, nothing fails, the journal is empty.
void reset();
/// Takes effect when the unit is opened next.
unit_s& unit(camera_unit_t unit);

/// Calls whose line starts with `call` fail with `error`, from the `from`-th on, counted from now.
void fail(const std::string& call, int error, int from = 1);
/// Such calls answer with these, in order, and succeed after the last one.
void answer(const std::string& call, std::vector<int> results);
/// Runs in every such call, on its thread, after it was logged; no lock is held.
void on_call(const std::string& call, std::function<void()> action);

/// Revokes the camera's resources: calls the status callback on a separate thread and returns when it has.
void revoke();

/// Calls the status callback with a recording's end on a thread of its own and returns when it has.
void end_recording(int error);

/// Tells the application that reopening a unit is worthwhile, as the service does for a camera that comes back.
void offer(camera_unit_t unit);

/// Posts a picture to the viewfinder that is running, as the camera does for every frame.
void post_frame();
/// Announces a frame for editing; 0, or the errno value of the pulse. Its luma and chroma are 128.
int announce();
/// Waits until that many frame pairs have been returned; false after 20 s.
bool wait_returned(int pairs);
/// The frame's bytes after the edits, luma first.
std::vector<std::uint8_t> frame();

/// Adds a line to the journal, for other fakes.
void write_down(const std::string& line);
std::vector<std::string> journal();
/// The journal without the queries, which are the lines that start with "get_" and "has_".
std::vector<std::string> commands();
void clear_journal();

/// Path that the next film gets; as long as it takes.
void set_film_name(const std::string& path);
/// Camera-roll files that are open.
int open_films();
bool is_open();

}  // namespace fake_camera
