#include "platform/screen/screen.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "platform/screen/screen_window.h"

/// The pixels of a pixmap.
struct screen_buffer_s {
  int width;
  int height;
  int stride;  ///< bytes
  std::unique_ptr<unsigned char[]> pixels;
};

struct screen_pixmap_s {
  screen_context_t context;
  int usage = 0;
  int format = 0;
  int width = 0;
  int height = 0;
  std::unique_ptr<screen_buffer_s> buffer;
};

struct screen_context_s {
  std::vector<std::unique_ptr<screen_pixmap_s>> pixmaps;
};

namespace {

constexpr int largest_side = 16384;
/// Rows begin at a multiple of this, with some padding as in graphics memory, so that code that forgets the stride
/// fails early.
constexpr int row_alignment = 64;

/// Everything a handle may refer to. Never destroyed: windows may outlive static objects.
struct Registry {
  std::vector<std::unique_ptr<screen_context_s>> contexts;
  std::vector<screen_window_t> windows;

  bool has(screen_context_t context) const {
    return std::any_of(contexts.begin(), contexts.end(), [&](const auto& known) { return known.get() == context; });
  }
  bool has(screen_window_t window) const { return std::find(windows.begin(), windows.end(), window) != windows.end(); }
  bool has(screen_pixmap_t pixmap) const {
    return any_pixmap([&](const screen_pixmap_s& known) { return &known == pixmap; });
  }
  bool has(screen_buffer_t buffer) const {
    return buffer != nullptr && any_pixmap([&](const screen_pixmap_s& known) { return known.buffer.get() == buffer; });
  }

 private:
  template <typename Condition>
  bool any_pixmap(Condition condition) const {
    return std::any_of(contexts.begin(), contexts.end(), [&](const auto& context) {
      return std::any_of(context->pixmaps.begin(), context->pixmaps.end(),
                         [&](const auto& pixmap) { return condition(*pixmap); });
    });
  }
};

Registry& registry() {
  static Registry* instance = new Registry;
  return *instance;
}

int refuse(int error = EINVAL) {
  errno = error;
  return -1;
}

bool right_angle(int degrees) {
  return degrees == 0 || degrees == 90 || degrees == 180 || degrees == 270;
}

bool possible_side(int pixels) {
  return pixels > 0 && pixels <= largest_side;
}

bool lies(int width, int height) {
  return width > height;
}

/// The picture at the buffer's size, in 0xAARRGGBB. If one is portrait and the other landscape, the picture is turned
/// first, since squeezing would distort it.
QImage fitted(QImage picture, int width, int height) {
  const bool square = picture.width() == picture.height() || width == height;
  if (!square && lies(picture.width(), picture.height()) != lies(width, height)) {
    picture = picture.transformed(QTransform().rotate(90));
  }
  if (picture.width() != width || picture.height() != height) {
    picture = picture.scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  }
  return picture.convertToFormat(QImage::Format_ARGB32);
}

}  // namespace

screen_window_s::screen_window_s() {
  registry().windows.push_back(this);
}

screen_window_s::~screen_window_s() {
  std::erase(registry().windows, this);
}

// --- contexts ---------------------------------------------------------------------------------

int screen_create_context(screen_context_t* context, int) {
  if (context == nullptr) return refuse();
  registry().contexts.push_back(std::make_unique<screen_context_s>());
  *context = registry().contexts.back().get();
  return 0;
}

int screen_destroy_context(screen_context_t context) {
  if (!registry().has(context)) return refuse();
  for (const screen_window_t window : registry().windows) {
    if (window->context == context) window->context = nullptr;
  }
  std::erase_if(registry().contexts, [&](const auto& known) { return known.get() == context; });
  return 0;
}

int screen_flush_context(screen_context_t context, int) {
  if (!registry().has(context)) return refuse();
  const std::vector<screen_window_t> windows = registry().windows;  // a window may go away during a callback
  for (const screen_window_t window : windows) {
    if (registry().has(window) && window->context == context && window->changed) window->changed();
  }
  return 0;
}

// --- windows ----------------------------------------------------------------------------------

int screen_set_window_property_iv(screen_window_t window, int property, const int* value) {
  if (!registry().has(window) || value == nullptr) return refuse();
  if (property == SCREEN_PROPERTY_ROTATION && right_angle(*value)) {
    window->rotation = *value;
  } else if (property == SCREEN_PROPERTY_MIRROR && (*value == 0 || *value == 1)) {
    window->mirror = *value == 1;
  } else if (property == SCREEN_PROPERTY_ZORDER) {
    window->zorder = *value;
  } else {
    return refuse();
  }
  if (window->changed) window->changed();
  return 0;
}

int screen_get_window_property_iv(screen_window_t window, int property, int* value) {
  if (!registry().has(window) || value == nullptr) return refuse();
  if (property == SCREEN_PROPERTY_ROTATION) {
    *value = window->rotation;
  } else if (property == SCREEN_PROPERTY_MIRROR) {
    *value = window->mirror ? 1 : 0;
  } else if (property == SCREEN_PROPERTY_ZORDER) {
    *value = window->zorder;
  } else {
    return refuse();
  }
  return 0;
}

int screen_get_window_property_pv(screen_window_t window, int property, void** value) {
  if (!registry().has(window) || value == nullptr || property != SCREEN_PROPERTY_CONTEXT) return refuse();
  *value = window->context;
  return 0;
}

// --- pixmaps and buffers ----------------------------------------------------------------------

int screen_create_pixmap(screen_pixmap_t* pixmap, screen_context_t context) {
  if (pixmap == nullptr || !registry().has(context)) return refuse();
  context->pixmaps.push_back(std::make_unique<screen_pixmap_s>(screen_pixmap_s{.context = context, .buffer = {}}));
  *pixmap = context->pixmaps.back().get();
  return 0;
}

int screen_destroy_pixmap(screen_pixmap_t pixmap) {
  if (!registry().has(pixmap)) return refuse();
  std::erase_if(pixmap->context->pixmaps, [&](const auto& known) { return known.get() == pixmap; });
  return 0;
}

int screen_set_pixmap_property_iv(screen_pixmap_t pixmap, int property, const int* value) {
  if (!registry().has(pixmap) || value == nullptr) return refuse();
  if (property == SCREEN_PROPERTY_USAGE && *value > 0) {
    pixmap->usage = *value;
  } else if (property == SCREEN_PROPERTY_FORMAT && *value == SCREEN_FORMAT_RGBA8888) {
    pixmap->format = *value;
  } else if (property == SCREEN_PROPERTY_BUFFER_SIZE && possible_side(value[0]) && possible_side(value[1])) {
    pixmap->width = value[0];
    pixmap->height = value[1];
  } else {
    return refuse();
  }
  return 0;
}

int screen_create_pixmap_buffer(screen_pixmap_t pixmap) {
  if (!registry().has(pixmap) || pixmap->format == 0 || pixmap->width == 0) return refuse();
  const int stride = (pixmap->width * 4 / row_alignment + 1) * row_alignment;
  const std::size_t bytes = static_cast<std::size_t>(stride) * pixmap->height;
  std::unique_ptr<unsigned char[]> pixels(new (std::nothrow) unsigned char[bytes]());
  if (!pixels) return refuse(ENOMEM);
  pixmap->buffer =
      std::make_unique<screen_buffer_s>(screen_buffer_s{pixmap->width, pixmap->height, stride, std::move(pixels)});
  return 0;
}

int screen_get_pixmap_property_pv(screen_pixmap_t pixmap, int property, void** value) {
  if (!registry().has(pixmap) || value == nullptr || property != SCREEN_PROPERTY_RENDER_BUFFERS) return refuse();
  if (!pixmap->buffer) return refuse();
  *value = pixmap->buffer.get();
  return 0;
}

int screen_get_buffer_property_pv(screen_buffer_t buffer, int property, void** value) {
  if (!registry().has(buffer) || value == nullptr || property != SCREEN_PROPERTY_POINTER) return refuse();
  *value = buffer->pixels.get();
  return 0;
}

int screen_get_buffer_property_iv(screen_buffer_t buffer, int property, int* value) {
  if (!registry().has(buffer) || value == nullptr || property != SCREEN_PROPERTY_STRIDE) return refuse();
  *value = buffer->stride;
  return 0;
}

int screen_read_window(screen_window_t window, screen_buffer_t buffer, int rectangle_count, const int*, int) {
  if (!registry().has(window) || !registry().has(buffer)) return refuse();
  if (rectangle_count != 0 || !window->read) return refuse(ENOTSUP);
  const QImage shown = window->read();
  if (shown.isNull()) return refuse(EIO);
  const QImage picture = fitted(shown, buffer->width, buffer->height);
  if (picture.isNull()) return refuse(ENOMEM);
  for (int row = 0; row < buffer->height; ++row) {
    std::memcpy(buffer->pixels.get() + static_cast<std::ptrdiff_t>(row) * buffer->stride, picture.constScanLine(row),
                static_cast<std::size_t>(buffer->width) * 4);
  }
  return 0;
}
