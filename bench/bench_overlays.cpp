// Speed of blending overlays, of a frame with everything on, and of loading textures and drawing stamps. All of
// it is first compared with plain code on the very pictures that are timed; see README.md for the recipe.

#include <libyuv.h>

#include <QImage>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <utility>
#include <vector>

#include "bench/bench_support.h"
#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/kernels/reference.h"
#include "engine/overlay.h"
#include "engine/overlay_loader.h"
#include "engine/picture.h"
#include "engine/stamp.h"
#include "engine/texture_table.h"

namespace {

using bench::frame_size;
using bench::paint_scene;
using bench::picture;

constexpr std::int32_t keep_red = 11;
constexpr stamp_settings_s stamp = {1, 5, 4};

/// A record with planes like those of a texture whose opacity varies from pixel to pixel.
logo_image_s texture(std::int32_t width, std::int32_t height) {
  logo_image_s record = allocate_overlay(width, height);
  std::minstd_rand random(5);
  QImage image(width, height, QImage::Format_ARGB32);
  for (int i = 0; i < width * height; ++i)
    image.setPixel(i % width, i / width, static_cast<QRgb>(random() << 8 ^ random() >> 4));
  convert_overlay(image, record);
  record.enabled = true;
  return record;
}

/// Full-frame texture and stamp of each size, made once.
struct overlays {
  logo_image_s logo, stamp;
};
const overlays& overlays_for(frame_size size) {
  static std::map<std::size_t, overlays> made;
  const auto [at, is_new] = made.try_emplace(size.pixels());
  if (is_new) {
    const auto width = static_cast<std::int32_t>(size.width), height = static_cast<std::int32_t>(size.height);
    at->second = {texture(width, height), texture(700, 44)};
    at->second.stamp.x = (width - 700) & ~1;
    at->second.stamp.y = height - 44;
  }
  return at->second;
}

camera_buffer_t descriptor(const picture& p) {
  camera_buffer_t buffer{};
  buffer.data = p.luma();
  buffer.data_size = p.bytes();
  buffer.frametype = CAMERA_FRAMETYPE_NV12;
  const auto width = static_cast<std::uint32_t>(p.size.width), height = static_cast<std::uint32_t>(p.size.height);
  buffer.nv12 = {height, width, width, static_cast<std::int64_t>(p.size.pixels()), width};
  return buffer;
}

void memcpy_frame(const picture& p) {
  static std::map<std::size_t, picture> copies;
  std::memcpy(copies.try_emplace(p.size.pixels(), p.size).first->second.luma(), p.luma(), p.bytes());
}

/// The same area in planar pictures; its chroma is not ours, so it is compared with itself only.
void i420_blend(const picture& p) {
  const logo_image_s& logo = overlays_for(p.size).logo;
  const auto width = static_cast<int>(p.size.width), height = static_cast<int>(p.size.height);
  std::uint8_t* const u = p.chroma();
  std::uint8_t* const v = u + p.chroma_bytes() / 2;
  const std::uint8_t* const logo_v = logo.chroma + p.chroma_bytes() / 2;
  libyuv::I420Blend(logo.luma, width, logo.chroma, width / 2, logo_v, width / 2, p.luma(), width, u, width / 2, v,
                    width / 2, logo.alpha, width, p.luma(), width, u, width / 2, v, width / 2, width, height);
}

void blend(const picture& p) {
  const camera_buffer_t buffer = descriptor(p);
  logo_filter(overlays_for(p.size).logo, &buffer, &buffer);
}

/// `columns` x `rows` of a record's top left at (x, y) of a picture, by the plain pass.
void blend_plain_at(const logo_image_s& record, const picture& p, std::size_t x, std::size_t y) {
  const auto stride = static_cast<std::ptrdiff_t>(p.size.width);
  std::uint8_t* const chroma = p.chroma() + y / 2 * p.size.width + x;
  const kernels::blend_planes planes = {record.luma,
                                        record.chroma,
                                        record.alpha,
                                        record.chroma_alpha,
                                        record.width,
                                        chroma,
                                        p.luma() + y * p.size.width + x,
                                        chroma,
                                        stride,
                                        stride};
  kernels::reference::blend(planes, std::min<std::size_t>(static_cast<std::size_t>(record.width), p.size.width - x),
                            static_cast<std::size_t>(record.height));
}

void blend_plain(const picture& p) {
  blend_plain_at(overlays_for(p.size).logo, p, 0, 0);
}

/// Everything at once: full-frame texture, stamp, colour-keep.
void heaviest(const picture& p) {
  const overlays& all = overlays_for(p.size);
  const logo_image_s logo = std::exchange(logo_image, all.logo), other = std::exchange(datetime_image, all.stamp);
  _cur_camera_filter = keep_red;
  const camera_buffer_t buffer = descriptor(p);
  process_frame(buffer, buffer);
  logo_image = logo;
  datetime_image = other;
}

void heaviest_plain(const picture& p) {
  const overlays& all = overlays_for(p.size);
  blend_plain_at(all.logo, p, 0, 0);
  logo_image_s visible = all.stamp;  // on the narrowest frame it begins left of the frame
  const std::ptrdiff_t cut = visible.x < 0 ? -visible.x : 0;
  visible.luma += cut;
  visible.chroma += cut;
  visible.alpha += cut;
  visible.chroma_alpha += cut / 2;
  blend_plain_at(visible, p, static_cast<std::size_t>(visible.x + cut), static_cast<std::size_t>(visible.y));
  const auto stride = static_cast<std::ptrdiff_t>(p.size.width);
  kernels::reference::keep_color(p.luma(), stride, p.chroma(), stride, p.size.width, p.size.height, filter_bitmask);
}

const bench::contender contenders[] = {
    {"memcpy_frame", memcpy_frame, memcpy_frame, paint_scene, nullptr, 0, true},
    {"i420_blend", i420_blend, i420_blend, paint_scene, nullptr, 0, true},
    {"blend", blend, blend_plain, paint_scene, "i420_blend", 0.85, true},
    {"blend_plain", blend_plain, blend_plain, paint_scene, nullptr, 0, true},
    {"heaviest", heaviest, heaviest_plain, paint_scene, "memcpy_frame", 4, true},
    {"heaviest_plain", heaviest_plain, heaviest_plain, paint_scene, nullptr, 0, true},
};

/// Microseconds of the fastest tenth of many runs, the contenders taken in turn: what a machine with other work to do
/// says about them, too.
std::array<double, 4> timed_in_turn(frame_size size, const std::array<bench::edit, 4>& edits) {
  const picture target(size), painted(size);
  paint_scene(painted);
  const std::size_t runs = size.pixels() > 4'000'000 ? 130 : 400;
  std::array<std::vector<double>, 4> times;
  for (std::size_t i = 0; i < runs * edits.size(); ++i) {
    std::memcpy(target.luma(), painted.luma(), painted.bytes());
    const auto start = std::chrono::steady_clock::now();
    edits[i % edits.size()](target);
    const std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - start;
    times[i % edits.size()].push_back(taken.count());
  }
  std::array<double, 4> fastest{};
  for (std::size_t i = 0; i < edits.size(); ++i) {
    std::ranges::sort(times[i]);
    fastest[i] = times[i][runs / 10];
  }
  return fastest;
}

void compare_in_turn() {
  std::printf("%-10s %8s %10s %8s %10s %18s %18s\n", "us", "memcpy", "I420Blend", "blend", "heaviest",
              "blend / I420Blend", "heaviest / memcpy");
  for (const frame_size size : bench::sizes) {
    const auto [copy, peer, own, all] = timed_in_turn(size, {memcpy_frame, i420_blend, blend, heaviest});
    std::printf("%-10s %8.1f %10.1f %8.1f %10.1f %18.2f %18.2f\n", size.name().c_str(), copy, peer, own, all,
                own / peer, all / copy);
  }
}

#ifdef MORVANE_PACKAGE_DIR

/// Loads a texture for 1080p frames; whether the planes are those of the plain conversion.
bool verify_load(const char* path) {
  if (logo_load_image(0, 0, path, true) != 0) return false;
  const QImage image = read_picture(path);
  const logo_image_s plain = allocate_overlay(logo_image.width, logo_image.height);
  const auto pixels = static_cast<std::size_t>(plain.width) * static_cast<std::size_t>(plain.height);
  kernels::reference::convert_bgra(image.constBits(), image.bytesPerLine(), static_cast<std::size_t>(plain.width),
                                   static_cast<std::size_t>(plain.height),
                                   {plain.luma, plain.chroma, plain.alpha, plain.chroma_alpha});
  return std::memcmp(plain.luma, logo_image.luma, pixels) == 0 &&
         std::memcmp(plain.chroma, logo_image.chroma, pixels / 2) == 0 &&
         std::memcmp(plain.alpha, logo_image.alpha, pixels) == 0 &&
         std::memcmp(plain.chroma_alpha, logo_image.chroma_alpha, pixels / 4) == 0;
}

void time_load(benchmark::State& state, const char* path) {
  for ([[maybe_unused]] auto _ : state) logo_load_image(0, 0, path, true);
}

void time_convert(benchmark::State& state, const char* path) {
  const QImage image = read_picture(path);
  const logo_image_s record = allocate_overlay(image.width(), image.height());
  for ([[maybe_unused]] auto _ : state) convert_overlay(image, record);
}

void time_stamp(benchmark::State& state) {
  const QImage sheet = load_datetime_template(stamp.color);
  std::time_t now = 1794845853;
  for ([[maybe_unused]] auto _ : state) generate_datetime(stamp, now++, sheet);
}

/// What the filter thread may have to wait for.
void time_swap(benchmark::State& state) {
  logo_image_s other = {};
  for ([[maybe_unused]] auto _ : state) other = exchange_overlay(logo_image, other);
}

/// The programs' working directory, in which "app" is the package.
bool enter_sandbox() {
  namespace fs = std::filesystem;
  const fs::path sandbox = fs::temp_directory_path() / "morvane-bench";
  std::error_code error;
  fs::create_directories(sandbox, error);
  fs::remove(sandbox / "app", error);
  fs::create_directory_symlink(MORVANE_PACKAGE_DIR, sandbox / "app", error);
  fs::current_path(sandbox, error);
  return !error;
}

template <typename Timed, typename... Arguments>
void add(const std::string& name, benchmark::TimeUnit unit, Timed timed, Arguments... arguments) {
  benchmark::RegisterBenchmark(name.c_str(), timed, arguments...)->Unit(unit)->Repetitions(9)->ReportAggregatesOnly();
}

bool register_loads() {
  if (!enter_sandbox()) return false;
  _screen_wid = 1920;
  _screen_hi = 1080;
  for (const char* path : img_textures) {
    if (!verify_load(path)) {
      std::fprintf(stderr, "%s is not loaded as it should be: not timed\n", path);
      return false;
    }
    add("load" + std::string(path).substr(std::string(path).rfind('/')), benchmark::kMillisecond, time_load, path);
  }
  add("convert_1080p", benchmark::kMillisecond, time_convert, img_textures[0]);
  if (!generate_datetime(stamp, 1794845853, load_datetime_template(stamp.color))) return false;
  add("redraw_stamp", benchmark::kMillisecond, time_stamp);
  add("swap", benchmark::kNanosecond, time_swap);
  return true;
}

#else

bool register_loads() {
  return true;
}

#endif

}  // namespace

int main(int argc, char** argv) {
  filter_init(0.5, filter_match_red);
  if (!bench::register_contenders(contenders)) return 1;
  if (argc == 2 && std::strcmp(argv[1], "--in-turn") == 0) {
    compare_in_turn();
    return 0;
  }
  if (!register_loads()) return 1;
  return bench::run(argc, argv, contenders);
}
