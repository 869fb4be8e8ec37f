// Overlays and stamps replaced at full speed under a running filter thread: every frame shows an old one or a
// new one, whole. Worth most under the thread and address sanitizers.

#include <gtest/gtest.h>

#include <QImage>
#include <atomic>
#include <filesystem>
#include <set>
#include <thread>

#include "engine/overlay_loader.h"
#include "engine/stamp.h"
#include "engine/stamp_layout.h"
#include "tests/engine/engine_state.h"
#include "tests/engine/fake_camera.h"
#include "tests/engine/png_file.h"
#include "tests/support/temp_dir.h"

namespace {

constexpr int width = 320, height = 48;
constexpr int scene = 100, logo_levels[] = {20, 60}, stamp_levels[] = {150, 220};
/// Where glyphs lie without a gap: the ten of "11-16-2026", 25 rows high.
constexpr int glyphs_width = 8 * 24 + 2 * 17, glyphs_height = 25;

QImage filled(int columns, int rows, int grey) {
  QImage image(columns, rows, QImage::Format_ARGB32);
  image.fill(QColor(grey, grey, grey));
  return image;
}

test_frame frame(width, height, 0, 1);
std::atomic<int> torn = 0;
std::set<int> seen_glyphs, seen_rest;  // filter thread, while it runs

/// Luma levels of a rectangle.
std::set<int> levels(int left, int top, int right, int bottom) {
  std::set<int> found;
  for (int row = top; row < bottom; ++row) {
    for (int x = left; x < right; ++x) found.insert(frame.luma(x, row));
  }
  return found;
}

/// Looks at the frame before this fetch, then paints the scene again. Filter thread.
void check_and_repaint() {
  const std::set<int> glyphs = levels(0, 0, glyphs_width, glyphs_height), rest = levels(0, 28, width, height);
  seen_glyphs.insert(glyphs.begin(), glyphs.end());
  seen_rest.insert(rest.begin(), rest.end());
  if (glyphs.size() != 1 || rest.size() != 1) ++torn;
  for (int row = 0; row < height; ++row) {
    for (int x = 0; x < width; ++x) frame.luma(x, row) = scene;
  }
}

class Replacing : public testing::Test {
 protected:
  void SetUp() override {
    reset_engine();
    fake_camera::reset();
    fake_camera::set_frame(&frame);
    fake_camera::set_quiet(true);
    before_ = std::filesystem::current_path();
    std::filesystem::current_path(folder_.path());
    std::filesystem::create_directories("app/native");
    write_file(img2_path, png_of(filled(704, 44, 0)));
    write_file("0.png", png_of(filled(width, height, logo_levels[0])));
    write_file("1.png", png_of(filled(40, 24, logo_levels[1])));
    _screen_wid = width;
    _screen_hi = height;
  }
  void TearDown() override {
    free_logo_image();
    free_datetime_image();
    std::filesystem::current_path(before_);
    reset_engine();
    fake_camera::reset();
  }

  TempDir folder_;
  std::filesystem::path before_;
};

TEST_F(Replacing, FramesShowWholeOverlaysAndStamps) {
  check_and_repaint();
  torn = 0;
  seen_glyphs.clear();
  seen_rest.clear();
  fake_camera::set_fetch_hook(check_and_repaint);
  ASSERT_EQ(start_filter_thread(7), 0);
  ASSERT_TRUE(fake_camera::wait_enabled());
  std::atomic<bool> done = false;
  std::thread source([&done] {
    for (int i = 1; i <= 1500; ++i) {
      fake_camera::announce();
      if (!fake_camera::wait_returned(i)) break;
    }
    done = true;
  });
  for (int i = 0; !done; ++i) {
    const QImage sheet = filled(860, 128, stamp_levels[i % 2]);
    ASSERT_TRUE(generate_datetime({5 + i / 2 % 4, 0, 0}, 1794845853 + i, sheet));
    ASSERT_EQ(logo_load_image(0, 0, i / 3 % 2 == 0 ? "0.png" : "1.png", true), 0);
    if (i % 5 == 0) restore_logo_image(suspend_logo_image());
    if (i % 7 == 0) free_logo_image();
    if (i % 11 == 0) free_datetime_image();
  }
  source.join();
  kill_thread();
  fake_camera::set_fetch_hook(nullptr);
  EXPECT_EQ(torn, 0);
  EXPECT_GE(seen_glyphs.size(), 3u) << "both stamps, and what lies under them";
  EXPECT_GE(seen_rest.size(), 2u);
}

}  // namespace
