// What a frame costs on its way to the screen, before the scene graph: from NV12 to the image of the size in which it
// is shown, and the backdrop of a picture that does not fill its place.

#include <benchmark/benchmark.h>
#include <libyuv/convert_argb.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/bench_support.h"
#include "platform/cascades/viewfinder_picture.h"

namespace {

using bench::frame_size;
using bench::picture;

struct job {
  const char* name;
  frame_size frame;
  QSize shown;
  handset::Stance stance;
};

/// The handset's display of 768 by 1280 pixels, and the same in a window of three quarters of the size.
const job jobs[] = {
    {"portrait", {1920, 1080}, {768, 432}, {0, false}},
    {"portrait, front", {1920, 1080}, {768, 432}, {0, true}},
    {"landscape", {1920, 1080}, {1280, 768}, {0, false}},
    {"landscape, front", {1920, 1080}, {1280, 768}, {0, true}},
    {"small window", {1920, 1080}, {960, 576}, {0, false}},
    {"no scaling", {1920, 1080}, {1920, 1080}, {0, false}},
    {"turned", {1920, 1080}, {720, 1280}, {90, false}},
    {"720p, landscape", {1280, 720}, {1280, 768}, {0, false}},
    {"480p, landscape", {640, 480}, {1280, 768}, {0, false}},
    {"2160p, portrait", {3840, 2160}, {768, 432}, {0, false}},
    {"2160p, landscape", {3840, 2160}, {1280, 768}, {0, false}},
};

handset::Nv12 view(const picture& frame) {
  const int width = static_cast<int>(frame.size.width);
  return {frame.luma(), width, frame.chroma(), width, width, static_cast<int>(frame.size.height)};
}

/// The plain way: the same steps one sample at a time, converted at the end.
QImage plain(const handset::Nv12& frame, QSize size, handset::Stance stance) {
  QSize upright = stance.lies() ? size.transposed() : size;
  std::vector<std::uint8_t> planes[2];
  handset::Nv12 now = frame;
  for (int step = 0; now.width != upright.width() || now.height != upright.height(); ++step) {
    const QSize to = upright.expandedTo({(now.width + 1) / 2, (now.height + 1) / 2});
    const int stride = (to.width() + 1) / 2 * 2;
    std::vector<std::uint8_t>& memory = planes[step % 2];
    memory.assign(static_cast<std::size_t>(stride) * (to.height() + 1) * 2, 0);
    std::uint8_t* chroma = memory.data() + static_cast<std::ptrdiff_t>(stride) * to.height();
    handset::scale_plane_plainly({now.luma, now.luma_stride, now.width, now.height}, 1, memory.data(), stride,
                                 to.width(), to.height());
    handset::scale_plane_plainly({now.chroma, now.chroma_stride, (now.width + 1) / 2, (now.height + 1) / 2}, 2, chroma,
                                 stride, (to.width() + 1) / 2, (to.height() + 1) / 2);
    now = {memory.data(), stride, chroma, stride, to.width(), to.height()};
  }
  QImage image(upright, QImage::Format_RGB32);
  libyuv::NV12ToARGBMatrix(now.luma, now.luma_stride, now.chroma, now.chroma_stride, image.bits(),
                           static_cast<int>(image.bytesPerLine()), &libyuv::kYuvJPEGConstants, now.width, now.height);
  if (stance.mirror) image = image.mirrored(true, false);
  return stance.angle != 0 ? image.transformed(QTransform().rotate(stance.angle)) : image;
}

bool verify(const job& which, const picture& frame) {
  handset::PictureConverter converter;
  const QImage fast = converter.convert(view(frame), which.shown, which.stance);
  if (fast == plain(view(frame), which.shown, which.stance)) return true;
  std::fprintf(stderr, "%s is not what the plain way makes\n", which.name);
  return false;
}

void time_picture(benchmark::State& state, const job& which) {
  const picture frame(which.frame);
  bench::paint_scene(frame);
  handset::PictureConverter converter;
  QImage shown;
  for (auto _ : state) {
    shown = converter.convert(view(frame), which.shown, which.stance);
    benchmark::DoNotOptimize(shown.constBits());
  }
}

void time_backdrop(benchmark::State& state) {
  const picture frame({1920, 1080});
  bench::paint_scene(frame);
  handset::Backdrop backdrop;
  for (auto _ : state) benchmark::DoNotOptimize(backdrop.follow(view(frame), {768, 1280}, {0, false}).constBits());
}

template <typename Function, typename... Arguments>
void add(const std::string& name, Function function, Arguments... arguments) {
  benchmark::RegisterBenchmark(name.c_str(), function, arguments...)
      ->Unit(benchmark::kMicrosecond)
      ->MinTime(0.05)
      ->Repetitions(15)
      ->ReportAggregatesOnly();
}

}  // namespace

int main(int argc, char** argv) {
  for (const job& which : jobs) {
    const picture frame(which.frame);
    bench::paint_noise(frame);
    if (!verify(which, frame)) return EXIT_FAILURE;
    add(which.name, time_picture, which);
  }
  add("backdrop", time_backdrop);
  return bench::run(argc, argv, {});
}
