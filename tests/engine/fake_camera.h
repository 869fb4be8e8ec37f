#pragma once

// A camera service for the engine's tests: just the functions that the filter thread calls, on frames
// in memory, with faults on request and a journal of the calls.

#include <string>
#include <vector>

#include "platform/camera/camera.h"
#include "tests/engine/test_frame.h"

namespace fake_camera {

/// Forgets everything: no faults, an empty journal, no frame.
void reset();

/// What enabling the event and fetching a pair answer from now on.
void set_enable_result(int result);
void set_fetch_result(int result);
/// Size of the metadata that input descriptors claim.
void set_metadata_size(std::uint64_t bytes);

/// The frame that every fetch yields, as input and as output. Outlives the filter thread.
void set_frame(test_frame* frame);

/// Waits until the event is enabled, or refused; false after 20 s.
bool wait_enabled();
/// Announces a frame with the pulse that was given; 0 or the pulse's errno.
int announce();
/// Waits until `count` pairs have been returned, or refused, since reset(); false after 20 s.
bool wait_returned(int count);
/// Calls so far, such as "enable rw 7", "register 7", "fetch 7", "return input 7".
std::vector<std::string> journal();

/// Runs on the filter thread in every fetch; not locked. Null for none.
void set_fetch_hook(void (*hook)());
/// While set, calls are not written down: the journal allocates.
void set_quiet(bool quiet);

}  // namespace fake_camera
