#pragma once

// The camera roll: how its films are named, who is at work on one, and what a run that was killed has left there.

#include <functional>
#include <string>
#include <vector>

namespace handset {

/// Creates an empty film named after the time: "VID_20261124_011800.mp4", or with "-2", "-3" … behind the time where
/// that is taken. (A number behind an underscore is that of a film's later part.) Creates the folder, too.
/// @param room  bytes that the path of the film's last possible part may have, with its NUL
/// @return 0 with `path` and an open `fd`, or an errno value
int create_roll_film(const std::string& folder, std::size_t room, std::string* path, int* fd);

/// A film's file and, in their order, the parts that its recording went on in: "name.mp4", "name_1.mp4", …
std::vector<std::string> film_parts(const std::string& path);

/// Marks a film as being written, for other processes as well. @param fd open for reading and writing
void hold_film(int fd);
/// Locks a film exclusively until `fd` is closed. @param fd open for writing
/// @return false if someone holds it; always true on a file system without locks
bool claim_film(int fd);

struct RollFindings {
  std::vector<std::string> completed;  ///< names of films that had been cut off and now end properly
  int removed = 0;                     ///< files that held nothing
};

/// Completes a film. @param was_cut_off set when it had not been complete. @return 0 or an errno value
using CompleteFilm = std::function<int(const std::string& path, bool* was_cut_off)>;

/// Puts in order what killed runs have left in a folder: completes films that were cut off, removes hidden copies and
/// films that never began. Touches only what the camera roll names so, and nothing that somebody holds or that is
/// younger than a minute and empty. May take long; not for the UI thread.
RollFindings tidy_camera_roll(const std::string& folder, const CompleteFilm& complete);

}  // namespace handset
