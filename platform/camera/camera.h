#pragma once

// The camera service: units, streams, frame events, the encoder and the camera roll.
//
// Every function may be called from any thread. Functions return 0 (CAMERA_EOK) or an errno value, which they also
// leave in errno. None blocks for longer than a few hundred milliseconds except camera_open,
// camera_start_video_viewfinder, camera_start_video, camera_stop_video and camera_close, which wait for hardware or a
// file, always with a limit (camera_timeouts in camera_config.h).

#include "platform/kernel/channel.h"

#include <cstddef>
#include <cstdint>

using camera_handle_t = std::int32_t;
inline constexpr camera_handle_t CAMERA_HANDLE_INVALID = -1;
inline constexpr int CAMERA_EOK = 0;

enum camera_unit_t : std::int32_t {
  CAMERA_UNIT_NONE = 0,
  CAMERA_UNIT_FRONT = 1,
  CAMERA_UNIT_REAR = 2,
  CAMERA_UNIT_DESKTOP = 3,
};

/// Access mode bits of camera_open. A handle permits only what its mode includes.
enum camera_mode_t : std::uint32_t {
  CAMERA_MODE_PREAD = 0x01,   ///< read stream properties
  CAMERA_MODE_PWRITE = 0x02,  ///< set stream properties
  CAMERA_MODE_DREAD = 0x04,   ///< read frames
  CAMERA_MODE_DWRITE = 0x08,  ///< edit frames
  CAMERA_MODE_ROLL = 0x10,    ///< create camera-roll files
  CAMERA_MODE_ALL = 0x1F,     ///< 31: all of them
};

enum camera_feature_t : std::int32_t {
  CAMERA_FEATURE_ZOOM = 1,
  CAMERA_FEATURE_FOCUS = 2,
  CAMERA_FEATURE_STABILIZATION = 4,
  CAMERA_FEATURE_VIDEO = 6,
  CAMERA_FEATURE_VIDEOLIGHT = 8,
  CAMERA_FEATURE_SHARED_ROTATION = 10,  ///< the viewfinder stream turns with the video stream
};

/// Stream properties, passed as property/value pairs ended by -1.
enum camera_imgprop_t : std::int32_t {
  CAMERA_IMGPROP_END = -1,
  CAMERA_IMGPROP_FORMAT = 0,     ///< camera_frametype_t, read only
  CAMERA_IMGPROP_WIDTH = 1,      ///< pixels, even
  CAMERA_IMGPROP_HEIGHT = 2,     ///< pixels, even
  CAMERA_IMGPROP_FRAMERATE = 3,  ///< frames per second, 1..120; default 30
  /// 0, 90, 180 or 270 degrees. Recorded for the stream and never applied to a pixel: no camera here turns with the
  /// handset, so every frame is already upright. The viewfinder's is passed to the screen with the frames; a film
  /// carries none.
  CAMERA_IMGPROP_ROTATION = 6,
  /// 1 on, 0 off. On the video stream it removes the shake from every frame, cropping up to 8 % of each side.
  CAMERA_IMGPROP_STABILIZATION = 7,
  CAMERA_IMGPROP_WIN_GROUPID = 11,  ///< C string, viewfinder stream only
  CAMERA_IMGPROP_WIN_ID = 12,       ///< C string, viewfinder stream only
};

enum camera_frametype_t : std::int32_t {
  CAMERA_FRAMETYPE_UNSPECIFIED = 0,
  CAMERA_FRAMETYPE_NV12 = 1,
};

enum camera_scenemode_t : std::int32_t {
  CAMERA_SCENE_AUTO = 1,
  CAMERA_SCENE_CLOSEUP = 4,
  CAMERA_SCENE_ACTION = 7,
  CAMERA_SCENE_BEACH_SNOW = 9,
  CAMERA_SCENE_NIGHT = 10,
};

enum camera_videolightmode_t : std::int32_t {
  CAMERA_VIDEOLIGHT_OFF = 0,
  CAMERA_VIDEOLIGHT_ON = 1,
};

enum camera_focusmode_t : std::int32_t {
  CAMERA_FOCUSMODE_OFF = 0,
  CAMERA_FOCUSMODE_FIXED = 1,
  CAMERA_FOCUSMODE_AUTO = 2,
  CAMERA_FOCUSMODE_MACRO = 3,
  CAMERA_FOCUSMODE_CONTINUOUS_AUTO = 5,
};

/// How an event key uses the frames: it edits them, holding each back from its consumers until it is returned.
enum camera_eventmode_t : std::int32_t { CAMERA_EVENTMODE_READWRITE = 1 };

enum camera_devstatus_t : std::int32_t {
  CAMERA_STATUS_RESOURCES_REVOKED = 12,  ///< the source failed or was unplugged; the unit delivers no more frames
  CAMERA_STATUS_VIDEO_FINISHED = 101,    ///< an unpaced clip has ended and the recording is complete
  CAMERA_STATUS_VIDEO_FAILED = 102,      ///< the recording ended by itself; `extra` is an errno value (ENOSPC, EIO …)
};

enum camera_roll_video_fmt_t : std::int32_t { CAMERA_ROLL_VIDEO_FMT_DEFAULT = 0 };

struct camera_res_t {
  std::uint32_t width;
  std::uint32_t height;
};

/// Geometry of an NV12 picture. Luma sample (x, r) is at data + r * stride + x. The chroma plane has
/// height / 2 rows of interleaved U,V pairs; row c starts at data + uv_offset + c * uv_stride.
struct camera_frame_nv12_t {
  std::uint32_t height;    ///< pixels
  std::uint32_t width;     ///< pixels
  std::uint32_t stride;    ///< bytes from one luma row to the next, >= width
  std::int64_t uv_offset;  ///< bytes from `data` to the chroma plane
  std::int64_t uv_stride;  ///< bytes from one chroma row to the next, >= width
};

/// One descriptor of a viewfinder frame. A frame event yields two of them, an input and an output,
/// that describe the same memory; both are valid until they are returned.
struct camera_buffer_t {
  std::uint8_t* data;
  std::uint64_t data_size;      ///< bytes from `data` to the end of the picture
  std::uint64_t metadata_size;  ///< bytes of per-frame metadata; 0 from this service
  std::int64_t timestamp;       ///< nanoseconds of CLOCK_MONOTONIC
  camera_frametype_t frametype;
  camera_frame_nv12_t nv12;
  std::uint64_t pair;  ///< internal: which pair
  std::uint32_t role;  ///< internal: 0 input, 1 output
};

using camera_eventkey_t = std::int32_t;

/// Runs on the thread that returned the frame's buffers. Must not use the descriptor after returning, nor call any
/// function of this header.
using camera_viewfinder_callback_t = void (*)(camera_handle_t handle, camera_buffer_t* buffer, void* arg);
/// Runs on a service thread with no service lock held. May call any function of this header, including camera_close.
using camera_status_callback_t = void (*)(camera_handle_t handle, camera_devstatus_t status, std::uint16_t extra,
                                          void* arg);

// --- units ------------------------------------------------------------------------------------

/// Opens a unit and reserves it for this handle.
/// @return EINVAL (unit, mode), EBUSY (unit is open already), ENODEV (no source), EIO (source fails)
int camera_open(camera_unit_t unit, std::uint32_t mode, camera_handle_t* handle);

/// Stops everything and releases the unit: finalizes a recording first and waits for a frame pair that is out. If the
/// pair is still not returned, its memory stays valid until it is.
/// @return EBADF for a handle that is not open.
int camera_close(camera_handle_t handle);

bool camera_has_feature(camera_handle_t handle, int feature);

/// Sizes in which viewfinder and video run together.
/// @param room       entries that `sizes` holds; 0 asks only for the number
/// @param supported  number of sizes the unit has (room 0), or number written
int camera_get_video_vf_resolutions(camera_handle_t handle, unsigned room, unsigned* supported, camera_res_t* sizes);

/// Angles that a video stream of this frame type supports, with the same calling convention.
int camera_get_supported_video_rotations(camera_handle_t handle, camera_frametype_t type, int room, int* supported,
                                         int* degrees);

// --- stream properties ------------------------------------------------------------------------
// Pairs (int property, value) ended by CAMERA_IMGPROP_END. Values are int for the setters, or const
// char* for the two window properties; int* for the getters. All pairs of a setter take effect, or
// none. EINVAL: unknown property, impossible value; ENOTSUP: feature the unit lacks; EBUSY: a size
// or rate that would change under a running viewfinder or recording.

int camera_set_vf_property(camera_handle_t handle, int property, ...);
int camera_get_vf_property(camera_handle_t handle, int property, ...);
int camera_set_video_property(camera_handle_t handle, int property, ...);
int camera_get_video_property(camera_handle_t handle, int property, ...);

// --- viewfinder -------------------------------------------------------------------------------

/// Starts the streams. Returns when the first frame has arrived or the source has refused; at once for cameras if the
/// service is configured not to wait for pictures.
/// @param frame_callback   called for every frame that has been returned or needed no edit; may be null
/// @param status_callback  called on status changes; may be null
/// @return EALREADY (runs), EIO (source fails), ETIMEDOUT (no frame in time), EINVAL (size never set)
int camera_start_video_viewfinder(camera_handle_t handle, camera_viewfinder_callback_t frame_callback,
                                  camera_status_callback_t status_callback, void* arg);
int camera_stop_viewfinder(camera_handle_t handle);

// --- frame events -----------------------------------------------------------------------------

/// Arms frame-ready notices: `event` is delivered once per frame pair that can be fetched.
/// @return EBUSY (another key is armed), EINVAL (event kind, mode), EBADF
int camera_enable_viewfinder_event(camera_handle_t handle, camera_eventmode_t mode, camera_eventkey_t* key,
                                   const pulse_event_t* event);
/// Disarms a key. Drops a pair that was announced but not fetched.
int camera_disable_event(camera_handle_t handle, camera_eventkey_t key);

/// Fetches the announced frame pair. EAGAIN when there is none; EBADF for a stale key or handle.
int camera_get_viewfinder_buffers(camera_handle_t handle, camera_eventkey_t key, camera_buffer_t* input,
                                  camera_buffer_t* output);
/// Hands one descriptor back; the second one sends the frame to its consumers. Allocates nothing. EINVAL for a
/// descriptor that is not out. Also works after camera_close.
int camera_return_buffer(camera_handle_t handle, camera_buffer_t* buffer);

/// Declares that the calling thread uses camera resources, for the count that camera_close checks.
int camera_register_resource(camera_handle_t handle);
int camera_deregister_resource(camera_handle_t handle);

// --- controls ---------------------------------------------------------------------------------

// The device does what it can; the rest is applied to the picture. The device is restored when the viewfinder stops.
// Devices are slow: these functions do not wait for them, and the last of several quick settings wins. Settings made
// before the viewfinder starts take effect then.

/// Uses a mode of the device, or its exposure and gain; else a mild preset for the picture. EINVAL: unknown mode.
int camera_set_scene_mode(camera_handle_t handle, camera_scenemode_t mode);
/// The camera's lamp, or a brighter picture.
int camera_config_videolight(camera_handle_t handle, camera_videolightmode_t mode);
/// Once the viewfinder has run for a moment, CAMERA_FEATURE_FOCUS tells whether the device's focus can be controlled.
/// ENOTSUP: it cannot, or not in this way.
int camera_set_focus_mode(camera_handle_t handle, camera_focusmode_t mode);
/// Zoom levels are steps of 2.5 %: level n magnifies by 1 + n / 40, first in the device, the rest in the picture. Until
/// a level is set the device keeps its own zoom.
int camera_get_zoom_limits(camera_handle_t handle, int* minimum, int* maximum, bool* smooth);
/// EINVAL outside the limits; ENOTSUP where the unit does not zoom.
int camera_set_zoom(camera_handle_t handle, int level, bool smooth);

// --- recording --------------------------------------------------------------------------------

/// Creates a new, empty video file in the camera roll (never an existing one).
/// @param name       receives the absolute path, NUL-terminated
/// @param name_size  bytes of `name`
/// @return EINVAL, ENAMETOOLONG, ETIMEDOUT if the disk does not answer within two seconds, or the error from creating
///         the folder or the file
int camera_roll_open_video(camera_handle_t handle, int* fd, char* name, std::size_t name_size,
                           camera_roll_video_fmt_t format);
/// Closes the file, and removes it if it is still empty and not being saved. Waits for at most two seconds.
/// @return ENODATA if it was empty; EINPROGRESS if it is closed later; EBADF; or the error from closing
int camera_roll_close_video(int fd);

/// Starts encoding the viewfinder stream, as edited, overwriting an existing file. Started while an event is armed it
/// takes edited frames only: when the editor goes, the film ends with its last frame.
/// @param status_callback called when the recording ends by itself; if null, the viewfinder's is
/// @return EINVAL (no viewfinder), EALREADY (recording runs), ENODEV (no encoder works), or the
///         error of opening the file
int camera_start_video(camera_handle_t handle, const char* filename, camera_viewfinder_callback_t video_callback,
                       camera_status_callback_t status_callback, void* arg);
/// Ends the recording and completes its file. Returns when the file is complete; if the service is configured not to
/// wait for films, within two seconds, with EINPROGRESS for one that is completed in the background. EINVAL if none was
/// started; the errno value of the failure if it has ended by itself.
int camera_stop_video(camera_handle_t handle);
