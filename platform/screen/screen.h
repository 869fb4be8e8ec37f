#pragma once

// The handset's screen: windows with integer properties, and pixmaps that a window can be read into. Functions return
// 0, or -1 with errno set. UI thread only.

using screen_window_t = struct screen_window_s*;
using screen_context_t = struct screen_context_s*;
using screen_pixmap_t = struct screen_pixmap_s*;
using screen_buffer_t = struct screen_buffer_s*;

inline constexpr int SCREEN_PROPERTY_BUFFER_SIZE = 5;      ///< pixmap: width, height; pixels
inline constexpr int SCREEN_PROPERTY_FORMAT = 14;          ///< pixmap
inline constexpr int SCREEN_PROPERTY_MIRROR = 29;          ///< window: 1 mirrored left to right, 0 not
inline constexpr int SCREEN_PROPERTY_POINTER = 34;         ///< buffer: first byte of the pixels
inline constexpr int SCREEN_PROPERTY_RENDER_BUFFERS = 37;  ///< pixmap: its one buffer
inline constexpr int SCREEN_PROPERTY_ROTATION = 38;        ///< window: 0, 90, 180 or 270 degrees clockwise
inline constexpr int SCREEN_PROPERTY_STRIDE = 44;          ///< buffer: bytes from one row to the next
inline constexpr int SCREEN_PROPERTY_USAGE = 48;           ///< pixmap
inline constexpr int SCREEN_PROPERTY_ZORDER = 54;          ///< window: negative is behind the application's window
inline constexpr int SCREEN_PROPERTY_CONTEXT = 95;         ///< window: its context

inline constexpr int SCREEN_USAGE_READ = 2;
inline constexpr int SCREEN_USAGE_NATIVE = 8;
/// 32-bit words 0xAARRGGBB.
inline constexpr int SCREEN_FORMAT_RGBA8888 = 8;

int screen_create_context(screen_context_t* context, int flags);
/// Also destroys its pixmaps.
int screen_destroy_context(screen_context_t context);
/// Makes property changes of the context's windows visible.
int screen_flush_context(screen_context_t context, int flags);

/// Rotation, mirror and z-order. EINVAL for another property or an impossible value and, as everywhere, for an unknown
/// or stale handle.
int screen_set_window_property_iv(screen_window_t window, int property, const int* value);
int screen_get_window_property_iv(screen_window_t window, int property, int* value);
/// The context.
int screen_get_window_property_pv(screen_window_t window, int property, void** value);

int screen_create_pixmap(screen_pixmap_t* pixmap, screen_context_t context);
int screen_destroy_pixmap(screen_pixmap_t pixmap);
/// Usage, format and size; the size is two values. EINVAL for values that a pixmap cannot have, including sizes over
/// 16384.
int screen_set_pixmap_property_iv(screen_pixmap_t pixmap, int property, const int* value);
/// Allocates the buffer, zeroed. EINVAL before format and size are set; ENOMEM.
int screen_create_pixmap_buffer(screen_pixmap_t pixmap);
int screen_get_pixmap_property_pv(screen_pixmap_t pixmap, int property, void** value);
int screen_get_buffer_property_pv(screen_buffer_t buffer, int property, void** value);
int screen_get_buffer_property_iv(screen_buffer_t buffer, int property, int* value);

/// Copies what a window shows now into a buffer, scaled to fill it, turning it clockwise by 90 degrees first if one is
/// portrait and the other landscape. ENOTSUP: rectangles, or a window that cannot be read; EIO: nothing to read.
/// @param rectangle_count  0: the whole window; nothing else is supported
int screen_read_window(screen_window_t window, screen_buffer_t buffer, int rectangle_count, const int* rectangles,
                       int flags);
