#pragma once

// Which of the cameras a unit films with. Values in, values out.

#include <functional>
#include <string>
#include <vector>

#include "platform/camera/device_finder.h"

namespace handset {

/// What is known against a camera at this moment.
struct Objection {
  CameraTrouble trouble = CameraTrouble::none;
  bool now = false;    ///< it is so now, rather than a little while ago
  std::string detail;  ///< for explain()
};

struct CameraChoice {
  int index = -1;                               ///< into the list; -1: none can be used
  CameraTrouble trouble = CameraTrouble::none;  ///< then: why; `none` where there is no camera at all
  std::string why;                              ///< the same in words
  std::string passed_over;  ///< one sentence for the screen where another camera has the better right
};

/// Takes the camera of a role. When there is an objection to it, takes the next one in the list without; when there are
/// objections to all, the first one to which there is none now. Infrared cameras step in only for each other.
/// @param wanted    the role's camera, -1: no camera can be used
/// @param evicted   a camera that is remembered in the role and plugged in, but cannot be used; -1: none
/// @param objection asked at most once for each camera
CameraChoice choose_camera(const std::vector<FoundCamera>& cameras, int wanted, int evicted,
                           const std::function<Objection(const FoundCamera&)>& objection);

/// The camera that is remembered under an identity and cannot be used; -1: there is no such.
int find_evicted(const std::vector<FoundCamera>& cameras, const std::string& remembered);

}  // namespace handset
