#pragma once

// Decides which camera a unit films with. Values in, values out.

#include <functional>
#include <string>
#include <vector>

#include "platform/camera/device_finder.h"

namespace handset {

/// What is known against a camera at this moment.
struct Objection {
  CameraTrouble trouble = CameraTrouble::none;
  bool now = false;    ///< true now, not merely a little while ago
  std::string detail;  ///< for explain()
};

struct CameraChoice {
  int index = -1;                               ///< into the list; -1 if no camera is usable
  CameraTrouble trouble = CameraTrouble::none;  ///< why not; `none` if there is no camera at all
  std::string why;                              ///< the same in words
  std::string passed_over;  ///< one sentence for the screen when a camera with a better claim was skipped
};

/// Takes the camera of a role. If there is an objection to it, takes the next one in the list without any; if all have
/// objections, the first whose objection has passed. Infrared cameras only replace each other.
/// @param wanted the role's camera; -1 if none can be used
/// @param evicted a camera remembered in the role and plugged in but unusable; -1 if none
/// @param objection asked at most once per camera
CameraChoice choose_camera(const std::vector<FoundCamera>& cameras, int wanted, int evicted,
                           const std::function<Objection(const FoundCamera&)>& objection);

/// The unusable camera remembered under an identity; -1 if none.
int find_evicted(const std::vector<FoundCamera>& cameras, const std::string& remembered);

}  // namespace handset
