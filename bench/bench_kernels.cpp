// Speed of the colour kernels and of the mask builder, with their peers in the same run. Every kernel is
// first compared with its reference on the very pictures that are timed; see README.md for the recipe.

#include <cstring>

#include "bench/bench_support.h"
#include "engine/color_filter.h"
#include "engine/kernels/color_kernels.h"
#include "engine/kernels/reference.h"
#include "platform/camera/brighten.h"

namespace {

using bench::paint_noise;
using bench::paint_scene;
using bench::picture;

constexpr std::uint8_t grey = 127, flat = 110, sepia_u = 110, sepia_v = 140;

void memset_chroma(const picture& p) {
  std::memset(p.chroma(), grey, p.chroma_bytes());
}
void memset_luma(const picture& p) {
  std::memset(p.luma(), flat, p.size.pixels());
}

template <auto fill>
void tint(const picture& p) {
  fill(p.chroma(), static_cast<std::ptrdiff_t>(p.size.width), p.size.width, p.size.height / 2, sepia_u, sepia_v);
}
template <auto fill>
void greyscale(const picture& p) {
  fill(p.chroma(), static_cast<std::ptrdiff_t>(p.size.width), p.size.width, p.size.height / 2, grey);
}
template <auto fill>
void flat_luma(const picture& p) {
  fill(p.luma(), static_cast<std::ptrdiff_t>(p.size.width), p.size.width, p.size.height, flat);
}
template <auto keep>
void keep_red(const picture& p) {
  const auto stride = static_cast<std::ptrdiff_t>(p.size.width);
  keep(p.luma(), stride, p.chroma(), stride, p.size.width, p.size.height, filter_bitmask);
}
template <auto brighten>
void brightened(const picture& p) {
  const auto stride = static_cast<std::ptrdiff_t>(p.size.width);
  brighten({p.luma(), stride, p.chroma(), stride, p.size.width, p.size.height});
}

const bench::contender contenders[] = {
    {"memset_chroma", memset_chroma, memset_chroma, paint_scene, nullptr, 0},
    {"tint", tint<kernels::fill_pairs>, tint<kernels::reference::fill_pairs>, paint_scene, "memset_chroma", 1.3},
    {"tint_plain", tint<kernels::reference::fill_pairs>, tint<kernels::reference::fill_pairs>, paint_scene, nullptr, 0},
    {"greyscale", greyscale<kernels::fill_bytes>, greyscale<kernels::reference::fill_bytes>, paint_scene,
     "memset_chroma", 1.3},
    {"memset_luma", memset_luma, memset_luma, paint_scene, nullptr, 0},
    {"flat_luma", flat_luma<kernels::fill_bytes>, flat_luma<kernels::reference::fill_bytes>, paint_scene, "memset_luma",
     1.2},
    {"keep_color_plain", keep_red<kernels::reference::keep_color>, keep_red<kernels::reference::keep_color>,
     paint_scene, nullptr, 0},
    {"keep_color", keep_red<kernels::keep_color>, keep_red<kernels::reference::keep_color>, paint_scene,
     "keep_color_plain", 0.45},
    {"keep_color_plain_noise", keep_red<kernels::reference::keep_color>, keep_red<kernels::reference::keep_color>,
     paint_noise, nullptr, 0},
    {"keep_color_noise", keep_red<kernels::keep_color>, keep_red<kernels::reference::keep_color>, paint_noise,
     "keep_color_plain_noise", 0.45},
    {"brighten_plain", brightened<handset::brighten_reference>, brightened<handset::brighten_reference>, paint_scene,
     nullptr, 0, true},
    {"brighten", brightened<handset::brighten>, brightened<handset::brighten_reference>, paint_scene, "brighten_plain",
     0.6, true},
};

void time_filter_init(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) filter_init(0.5, filter_match_red);
}

}  // namespace

int main(int argc, char** argv) {
  filter_init(0.5, filter_match_red);
  if (!bench::register_contenders(contenders)) return 1;
  benchmark::RegisterBenchmark("filter_init", time_filter_init)
      ->Unit(benchmark::kMicrosecond)
      ->Repetitions(9)
      ->ReportAggregatesOnly();
  return bench::run(argc, argv, contenders);
}
