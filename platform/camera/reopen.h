#pragma once

#include <chrono>
#include <string>

#include "platform/camera/camera.h"

namespace handset {

/// Why a unit does not have the camera that it should have.
enum class Missing {
  stand_in,     ///< there was none, and something else is shown
  searching,    ///< nobody knew yet what there is
  not_opened,   ///< there was none that can be used
  lost,         ///< it was unplugged, or has stopped working
  passed_over,  ///< it does not start, and there is another one
  displaced,    ///< it was away when another one took its place
};

struct MissedCamera {
  Missing how;
  std::string identity;  ///< of the camera that was in use, or whose place it is; empty for none
  std::chrono::steady_clock::time_point since;
};

/// The identity of the camera that a unit would be given now; empty where it would get none. Any thread.
std::string camera_candidate(camera_unit_t unit);

/// The camera that is remembered in a unit's role and is not plugged in now; empty for none. Any thread.
std::string absent_owner(camera_unit_t unit);

/// What is known of the cameras that are plugged in.
struct Outlook {
  std::string candidate;  ///< identity of the one that the unit would get; empty for none
  bool known = true;      ///< they have been looked for
  bool none = false;      ///< and there is none
};

/// Whether opening a unit anew is worth it.
bool worth_reopening(const MissedCamera& missed, const Outlook& outlook, std::chrono::steady_clock::time_point now);

// Which units wait for a camera; the listener of set_reopen_listener() is told when it is there. Any thread.

void miss_camera(camera_unit_t unit, Missing how, const std::string& identity);
void forget_missed(camera_unit_t unit);

}  // namespace handset
