#pragma once

#include <string>

namespace handset {

/// Removes the room that the index of a completed MP4 file did not need, when that is a noticeable part
/// of the file (more than a twentieth). The index stays in front of the media. The file is replaced as
/// a whole or left as it was.
/// @return 0, also when there was nothing to gain, or an errno value; EINVAL for a file that is not laid
///         out as the muxer leaves it, ENOSPC when there is no room for the copy
int compact_mp4(const std::string& path);

}  // namespace handset
