#pragma once

// The filter thread: one per running viewfinder. It waits for frame-ready pulses and edits one
// frame pair per pulse, in place.

#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <mutex>

#include "platform/camera/camera.h"
#include "platform/kernel/channel.h"

/// Pulse code of frame-ready and stop pulses.
inline constexpr int filter_pulse_code = 123;
/// An input descriptor whose metadata has exactly this size comes from a broken frame.
inline constexpr std::uint64_t broken_frame_metadata_size = 65536;

/// Effect id: -1 none, 0 custom colour, 1-4 solid tints, 5 sepia, 6 flat luma, 7 greyscale, 8-11
/// colour-keep yellow, blue, green, red. Any other value applies the mask.
extern std::atomic<std::int32_t> _cur_camera_filter;
extern std::atomic<bool> _include_logo;                    ///< overlays are blended at all
extern std::atomic<bool> _include_logo_original_color;     ///< overlay after the colour filter
extern std::atomic<bool> _screen_recording;                ///< frames pass untouched
extern std::atomic<bool> _major_error;                     ///< the camera's resources were revoked
extern std::atomic<std::int32_t> _screen_wid, _screen_hi;  ///< size of the frames, pixels

/// Written only while no filter thread runs.
extern std::atomic<camera_handle_t> mHandle;
extern std::atomic<int> filter_chid;
extern std::atomic<int> filter_coid;
extern pulse_event_t filter_sigev;
extern pthread_t filter_tid;
extern std::atomic<bool> filter_stop;

/// The engine lock. The filter thread holds it for the per-frame steps; others hold it only to swap
/// in a finished table or finished planes. Nothing may be called under it that waits or logs.
std::mutex& engine_lock();

/// Starts the filter thread on an open camera: channel, connection, pulse event, thread. When it returns
/// the thread has armed its frame event, so that frames from then on are edited, or has failed to.
/// UI thread; a thread that is still there is stopped first.
/// @return 0, or an errno value with nothing left behind
int start_filter_thread(camera_handle_t handle);

/// Thread body. The argument is not used; returns null.
void* filter_thread(void* unused);

/// Stops and joins the filter thread. Does nothing when filter_stop is set already or no thread was
/// ever started; when another thread is just joining it, returns after that. Any thread but the
/// filter thread.
void kill_thread();

/// What the application object's status_callback does: on status 12 stops and joins the filter
/// thread and sets _major_error. Any thread but the filter thread.
void filter_status_callback(camera_handle_t handle, camera_devstatus_t status, std::uint16_t extra, void* arg);

/// The per-frame steps on one pair, in order: bypass, guard, overlay, stamp, colour filter, overlay
/// in its own colours. Size and the blends' offsets come from the input descriptor; pixels are
/// written through the output's. Allocates nothing. Takes the engine lock.
void process_frame(const camera_buffer_t& input, const camera_buffer_t& output);
