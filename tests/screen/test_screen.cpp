#include <gtest/gtest.h>

#include <QPainter>
#include <cerrno>
#include <cstdint>
#include <memory>

#include "platform/screen/screen_window.h"

namespace {

/// A context with a pixmap, ready but for what a test is about.
struct Target {
  Target() {
    EXPECT_EQ(screen_create_context(&context, 0), 0);
    EXPECT_EQ(screen_create_pixmap(&pixmap, context), 0);
  }
  ~Target() { screen_destroy_context(context); }

  int set(int property, std::initializer_list<int> values) {
    return screen_set_pixmap_property_iv(pixmap, property, values.begin());
  }
  screen_buffer_t make(int width, int height) {
    EXPECT_EQ(set(SCREEN_PROPERTY_USAGE, {SCREEN_USAGE_READ | SCREEN_USAGE_NATIVE}), 0);
    EXPECT_EQ(set(SCREEN_PROPERTY_FORMAT, {SCREEN_FORMAT_RGBA8888}), 0);
    EXPECT_EQ(set(SCREEN_PROPERTY_BUFFER_SIZE, {width, height}), 0);
    EXPECT_EQ(screen_create_pixmap_buffer(pixmap), 0);
    void* buffer = nullptr;
    EXPECT_EQ(screen_get_pixmap_property_pv(pixmap, SCREEN_PROPERTY_RENDER_BUFFERS, &buffer), 0);
    return static_cast<screen_buffer_t>(buffer);
  }

  screen_context_t context = nullptr;
  screen_pixmap_t pixmap = nullptr;
};

/// The words of a buffer, by its stride.
QImage words_of(screen_buffer_t buffer, int width, int height) {
  void* pixels = nullptr;
  int stride = 0;
  EXPECT_EQ(screen_get_buffer_property_pv(buffer, SCREEN_PROPERTY_POINTER, &pixels), 0);
  EXPECT_EQ(screen_get_buffer_property_iv(buffer, SCREEN_PROPERTY_STRIDE, &stride), 0);
  EXPECT_GE(stride, width * 4);
  return QImage(static_cast<const uchar*>(pixels), width, height, stride, QImage::Format_ARGB32).copy();
}

/// Red left, blue right, white along the upper edge.
QImage sign(int width, int height) {
  QImage image(width, height, QImage::Format_RGB32);
  QPainter painter(&image);
  painter.fillRect(0, 0, width / 2, height, Qt::red);
  painter.fillRect(width / 2, 0, width - width / 2, height, Qt::blue);
  painter.fillRect(0, 0, width, height / 5, Qt::white);
  return image;
}

TEST(Screen, WindowPropertiesTakeOnlyWhatTheyCanBe) {
  screen_window_s window;
  int changes = 0;
  window.changed = [&] { ++changes; };
  const auto set = [&](int property, int value) { return screen_set_window_property_iv(&window, property, &value); };
  EXPECT_EQ(set(SCREEN_PROPERTY_ROTATION, 270), 0);
  EXPECT_EQ(set(SCREEN_PROPERTY_MIRROR, 1), 0);
  EXPECT_EQ(set(SCREEN_PROPERTY_ZORDER, -1), 0);
  EXPECT_EQ(changes, 3);
  for (const auto& [property, value] : {std::pair{SCREEN_PROPERTY_ROTATION, 45},
                                        {SCREEN_PROPERTY_ROTATION, -90},
                                        {SCREEN_PROPERTY_ROTATION, 360},
                                        {SCREEN_PROPERTY_MIRROR, 2},
                                        {SCREEN_PROPERTY_FORMAT, 8},
                                        {999, 0}}) {
    errno = 0;
    EXPECT_EQ(set(property, value), -1) << property << " = " << value;
    EXPECT_EQ(errno, EINVAL);
  }
  EXPECT_EQ(changes, 3);
  int value = 0;
  EXPECT_EQ(screen_get_window_property_iv(&window, SCREEN_PROPERTY_ROTATION, &value), 0);
  EXPECT_EQ(value, 270);
  EXPECT_EQ(screen_get_window_property_iv(&window, SCREEN_PROPERTY_MIRROR, &value), 0);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(screen_get_window_property_iv(&window, SCREEN_PROPERTY_ZORDER, &value), 0);
  EXPECT_EQ(value, -1);
}

TEST(Screen, AFlushReachesTheWindowsOfItsContext) {
  screen_context_t contexts[2];
  for (screen_context_t& context : contexts) ASSERT_EQ(screen_create_context(&context, 0), 0);
  screen_window_s mine;
  screen_window_s other;
  mine.context = contexts[0];
  other.context = contexts[1];
  int told = 0;
  mine.changed = [&] { ++told; };
  other.changed = [] { FAIL(); };
  EXPECT_EQ(screen_flush_context(contexts[0], 0), 0);
  EXPECT_EQ(told, 1);
  for (const screen_context_t context : contexts) EXPECT_EQ(screen_destroy_context(context), 0);
  EXPECT_EQ(mine.context, nullptr);
  EXPECT_EQ(screen_flush_context(contexts[0], 0), -1);
}

TEST(Screen, APixmapNeedsFormatAndSize) {
  Target target;
  EXPECT_EQ(screen_create_pixmap_buffer(target.pixmap), -1);
  void* buffer = nullptr;
  EXPECT_EQ(screen_get_pixmap_property_pv(target.pixmap, SCREEN_PROPERTY_RENDER_BUFFERS, &buffer), -1);
  EXPECT_EQ(target.set(SCREEN_PROPERTY_FORMAT, {7}), -1);
  EXPECT_EQ(target.set(SCREEN_PROPERTY_USAGE, {0}), -1);
  EXPECT_EQ(target.set(SCREEN_PROPERTY_BUFFER_SIZE, {0, 10}), -1);
  EXPECT_EQ(target.set(SCREEN_PROPERTY_BUFFER_SIZE, {10, 16385}), -1);
  EXPECT_EQ(target.set(SCREEN_PROPERTY_FORMAT, {SCREEN_FORMAT_RGBA8888}), 0);
  EXPECT_EQ(screen_create_pixmap_buffer(target.pixmap), -1);
  const QImage fresh = words_of(target.make(48, 5), 48, 5);
  EXPECT_EQ(fresh.pixel(47, 4), 0U);
}

TEST(Screen, ReadsAWindowWordByWord) {
  screen_window_s window;
  const QImage shown = sign(768, 1280);
  window.read = [&] { return shown; };
  Target target;
  const screen_buffer_t buffer = target.make(768, 1280);
  ASSERT_EQ(screen_read_window(&window, buffer, 0, nullptr, 0), 0);
  EXPECT_EQ(words_of(buffer, 768, 1280), shown.convertToFormat(QImage::Format_ARGB32));
}

TEST(Screen, ScalesAndTurnsWhatHasAnotherShape) {
  screen_window_s window;
  QImage shown = sign(240, 400);
  window.read = [&] { return shown; };
  Target target;
  const screen_buffer_t buffer = target.make(100, 150);
  ASSERT_EQ(screen_read_window(&window, buffer, 0, nullptr, 0), 0);
  const QImage scaled = words_of(buffer, 100, 150);
  EXPECT_EQ(scaled.pixelColor(50, 10), QColor(Qt::white));
  EXPECT_EQ(scaled.pixelColor(20, 100), QColor(Qt::red));
  EXPECT_EQ(scaled.pixelColor(80, 100), QColor(Qt::blue));
  // Lying: turned clockwise, its upper edge is at the right.
  shown = sign(400, 240);
  ASSERT_EQ(screen_read_window(&window, buffer, 0, nullptr, 0), 0);
  const QImage turned = words_of(buffer, 100, 150);
  EXPECT_EQ(turned.pixelColor(95, 75), QColor(Qt::white));
  EXPECT_EQ(turned.pixelColor(30, 30), QColor(Qt::red));
  EXPECT_EQ(turned.pixelColor(30, 120), QColor(Qt::blue));
  // A square one is only scaled.
  shown = sign(300, 300);
  ASSERT_EQ(screen_read_window(&window, buffer, 0, nullptr, 0), 0);
  EXPECT_EQ(words_of(buffer, 100, 150).pixelColor(50, 10), QColor(Qt::white));
}

TEST(Screen, AWindowThatShowsNothingIsNotRead) {
  screen_window_s window;
  Target target;
  const screen_buffer_t buffer = target.make(10, 10);
  EXPECT_EQ(screen_read_window(&window, buffer, 0, nullptr, 0), -1);
  EXPECT_EQ(errno, ENOTSUP);
  window.read = [] { return QImage(); };
  EXPECT_EQ(screen_read_window(&window, buffer, 0, nullptr, 0), -1);
  EXPECT_EQ(errno, EIO);
  const int rectangle[4] = {0, 0, 5, 5};
  EXPECT_EQ(screen_read_window(&window, buffer, 1, rectangle, 0), -1);
  EXPECT_EQ(errno, ENOTSUP);
}

TEST(Screen, HandlesThatAreGoneAreRefused) {
  screen_context_t context = nullptr;
  screen_pixmap_t pixmap = nullptr;
  EXPECT_EQ(screen_create_pixmap(&pixmap, context), -1);
  ASSERT_EQ(screen_create_context(&context, 0), 0);
  ASSERT_EQ(screen_create_pixmap(&pixmap, context), 0);
  screen_pixmap_t second = nullptr;
  ASSERT_EQ(screen_create_pixmap(&second, context), 0);
  EXPECT_EQ(screen_destroy_pixmap(second), 0);
  EXPECT_EQ(screen_destroy_pixmap(second), -1);
  EXPECT_EQ(screen_destroy_context(context), 0);
  EXPECT_EQ(screen_destroy_pixmap(pixmap), -1);
  EXPECT_EQ(screen_destroy_context(context), -1);
  EXPECT_EQ(screen_create_pixmap(&pixmap, context), -1);
  int value = 0;
  EXPECT_EQ(screen_set_window_property_iv(nullptr, SCREEN_PROPERTY_ROTATION, &value), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(screen_get_buffer_property_iv(nullptr, SCREEN_PROPERTY_STRIDE, &value), -1);
}

}  // namespace
