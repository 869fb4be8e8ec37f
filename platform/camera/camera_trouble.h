#pragma once

// Why a camera is not used, in words and as errno values, and which cameras failed recently.

#include <chrono>
#include <string>

namespace handset {

enum class CameraTrouble {
  none,
  no_access,   ///< this user may not open its node
  busy,        ///< another program is using it
  no_picture,  ///< it does not respond, or sends nothing
  gone,        ///< it was unplugged
  searching,   ///< the camera search has not finished
  formats,     ///< it offers no displayable format
};

/// One sentence for the screen and stderr, without a period, such as "HD Webcam: in use by another program".
/// @param detail appended in parentheses; may be empty
/// @return empty for `none`
std::string explain(CameraTrouble trouble, const std::string& label, const std::string& detail = {});

/// The errno value of a trouble; 0 for `none`.
int error_of(CameraTrouble trouble);

/// How long others are preferred after a failure.
inline constexpr std::chrono::seconds failure_memory{30};

/// Records within this process that a camera has just failed. `none` forgets it. Any thread.
void note_camera_failure(const std::string& identity, CameraTrouble trouble);
/// Forgets a camera's failure once it works. Any thread.
void clear_camera_failure(const std::string& identity);
/// The recorded failure of a camera, if no older than failure_memory; `none` otherwise. Any thread.
CameraTrouble recent_camera_failure(const std::string& identity);

}  // namespace handset
