#pragma once

// Why a camera is not used, in words and as errno values, and which cameras failed lately.

#include <chrono>
#include <string>

namespace handset {

enum class CameraTrouble {
  none,
  no_access,   ///< its node may not be opened by this user
  busy,        ///< another program films with it
  no_picture,  ///< it does not answer, or sends nothing
  gone,        ///< it was unplugged
  searching,   ///< nobody knows yet which cameras there are
  formats,     ///< nothing that it offers can be shown
};

/// One sentence for the screen and the error stream without a period, such as "HD Webcam: in use by another program".
/// @param detail  put in brackets behind the reason; may be empty
/// @return empty for `none`
std::string explain(CameraTrouble trouble, const std::string& label, const std::string& detail = {});

/// The errno value of a trouble; 0 for `none`.
int error_of(CameraTrouble trouble);

/// How long a failure makes others preferred.
inline constexpr std::chrono::seconds failure_memory{30};

/// Remembers within this process that a camera failed now. `none` forgets it. Any thread.
void note_camera_failure(const std::string& identity, CameraTrouble trouble);
/// Forgets a camera's failure: it works. Any thread.
void clear_camera_failure(const std::string& identity);
/// What is remembered of a camera and not older than failure_memory; `none` when there is nothing. Any thread.
CameraTrouble recent_camera_failure(const std::string& identity);

}  // namespace handset
