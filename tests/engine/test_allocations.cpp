// Proves that the filter thread allocates nothing per frame, and that pictures cannot ask for any amount of memory:
// this program's malloc counts what one thread asks for.

#include <gtest/gtest.h>

#include <cstdlib>

#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay.h"
#include "engine/overlay_loader.h"
#include "engine/picture.h"
#include "tests/engine/engine_state.h"
#include "tests/engine/fake_camera.h"
#include "tests/engine/overlay_planes.h"
#include "tests/engine/png_file.h"
#include "tests/support/allocation_counter.h"
#include "tests/support/temp_dir.h"

namespace {

using allocation_counter::allocations;
using allocation_counter::counting;
using allocation_counter::largest;

TEST(Allocations, TheCounterCounts) {
  counting = true;
  int* volatile created = new int;  // volatile: or the compiler leaves the pair out
  void* volatile cleared = std::calloc(1, 1);
  counting = false;
  delete created;
  std::free(cleared);
  EXPECT_EQ(allocations.exchange(0), 2);
}

TEST(Allocations, FramesCostNone) {
  reset_engine();
  fake_camera::reset();
  test_frame frame(640, 480, 0, 1);
  fake_camera::set_frame(&frame);
  fake_camera::set_quiet(true);
  fake_camera::set_fetch_hook([] { counting = true; });  // from the first fetch to the thread's end
  const overlay_planes planes(64, 64, 1);
  logo_image = datetime_image = planes.record;
  ASSERT_EQ(start_filter_thread(7), 0);
  ASSERT_TRUE(fake_camera::wait_enabled());
  for (int i = 1; i <= 1300; ++i) {
    _cur_camera_filter = i % 13 - 1;
    _include_logo_original_color = i % 2 == 0;
    fake_camera::set_metadata_size(i % 100 == 0 ? broken_frame_metadata_size : 0);
    ASSERT_EQ(fake_camera::announce(), 0);
    ASSERT_TRUE(fake_camera::wait_returned(i));
  }
  kill_thread();
  EXPECT_EQ(allocations, 0);
  logo_image = datetime_image = {};
}

TEST(Allocations, PicturesAskForBoundedMemory) {
  const TempDir folder;
  const std::string path = folder.file("picture.png");
  const auto largest_while_reading = [&path](const std::string& file) {
    write_file(path, file);
    largest = 0;
    counting = true;
    const QImage image = read_picture(path.c_str());
    counting = false;
    EXPECT_TRUE(image.isNull());
    return largest.load();
  };
  QImage image(8, 8, QImage::Format_ARGB32);
  image.fill(Qt::red);
  const QImage mono = image.convertToFormat(QImage::Format_Mono), deep = image.convertToFormat(QImage::Format_RGBA64);
  constexpr std::size_t little = 1 << 20, limit = 128 << 20;
  for (const QImage& picture : {image, mono, deep}) {
    const std::string png = png_of(picture);
    EXPECT_LT(largest_while_reading(with_claimed_size(png, 60000, 60000)), little);
    EXPECT_LE(largest_while_reading(with_claimed_size(png, 8192, 4096)), limit);
  }
}

TEST(Allocations, TextsInAPictureAreNotUnpacked) {
  QImage image(8, 8, QImage::Format_ARGB32);
  image.fill(Qt::red);
  const std::string png = png_of(image);
  // Compressed text of 4 MiB before the pixels, fifty times.
  const QByteArray packed = qCompress(QByteArray(4 << 20, 'a')).mid(4);
  const std::string text = png_chunk("zTXt", std::string("k\0\0", 3) + packed.toStdString());
  std::string stuffed = png.substr(0, 33);
  for (int i = 0; i < 50; ++i) stuffed += text;
  stuffed += png.substr(33);
  const TempDir folder;
  const std::string path = folder.file("picture.png");
  write_file(path, stuffed);
  largest = 0;
  counting = true;
  const QImage read = read_picture(path.c_str());
  counting = false;
  EXPECT_EQ(read, image);
  EXPECT_LT(largest, std::size_t{2} << 20);
}

TEST(Allocations, NarrowTallPicturesAreNotBlownUp) {
  reset_engine();
  _screen_wid = 4096;
  _screen_hi = 2160;
  const TempDir folder;
  const std::string path = folder.file("picture.png");
  write_file(path, png_of(QImage(1, 500000, QImage::Format_ARGB32)));
  largest = 0;
  counting = true;
  EXPECT_EQ(logo_load_image(0, 0, path.c_str(), false), 0);
  counting = false;
  EXPECT_LT(largest, 128u << 20);
  EXPECT_GE(logo_image.height, 2160);
  free_logo_image();
}

}  // namespace
