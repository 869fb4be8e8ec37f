// Speed of the colour kernels and of the mask builder, with their peers in the same run. Every kernel is
// first compared with its reference on the very pictures that are timed; see README.md for the recipe.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "engine/color_filter.h"
#include "engine/kernels/color_kernels.h"
#include "engine/kernels/reference.h"

namespace {

constexpr double frame_ns = 1e9 / 30;
constexpr std::uint8_t grey = 127, flat = 110, sepia_u = 110, sepia_v = 140;

struct frame_size {
  std::size_t width, height;
  std::string name() const { return std::to_string(width) + "x" + std::to_string(height); }
  std::size_t pixels() const { return width * height; }
};
constexpr frame_size sizes[] = {{640, 480}, {1280, 720}, {1920, 1080}, {3840, 2160}};

/// An NV12 picture without padding, page-aligned as a camera's are.
class picture {
 public:
  explicit picture(frame_size pixels)
      : size(pixels), memory_(static_cast<std::uint8_t*>(std::aligned_alloc(4096, (bytes() + 4095) / 4096 * 4096))) {}

  std::uint8_t* luma() const { return memory_.get(); }
  std::uint8_t* chroma() const { return memory_.get() + size.pixels(); }
  std::size_t chroma_bytes() const { return size.pixels() / 2; }
  std::size_t bytes() const { return size.pixels() + chroma_bytes(); }

  const frame_size size;

 private:
  struct release {
    void operator()(std::uint8_t* memory) const { std::free(memory); }
  };
  std::unique_ptr<std::uint8_t, release> memory_;
};

std::uint8_t wave(double middle, double swing, double phase, unsigned noise) {
  return static_cast<std::uint8_t>(middle + swing * std::sin(phase) + noise);
}

/// Soft coloured areas with a little sensor noise: what a mask sees of a real scene.
void paint_scene(const picture& target) {
  std::minstd_rand random(3);
  const auto noise = [&random](unsigned range) { return static_cast<unsigned>(random() >> 8) % range; };
  const auto [width, height] = target.size;
  for (std::size_t i = 0; i < target.size.pixels(); ++i) {
    const double x = static_cast<double>(i % width) / static_cast<double>(width);
    const double y = static_cast<double>(i / width) / static_cast<double>(height);
    target.luma()[i] = wave(120, 90, 13 * x + 5 * y, noise(8));
  }
  for (std::size_t i = 0; i < target.chroma_bytes(); ++i) {
    const double x = static_cast<double>(i % width / 2) / static_cast<double>(width / 2);
    const double y = static_cast<double>(i / width) / static_cast<double>(height / 2);
    target.chroma()[i] = wave(126, 110, i % 2 == 0 ? 7 * x + 3 * y : 5 * x - 9 * y, noise(4));
  }
}

/// Every block in a cell of its own: no branch of the plain pass can be predicted.
void paint_noise(const picture& target) {
  std::minstd_rand random(4);
  for (std::size_t i = 0; i < target.bytes(); ++i) target.luma()[i] = static_cast<std::uint8_t>(random() >> 8);
}

using edit = void (*)(const picture&);

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

struct contender {
  const char* name;
  edit run;
  edit reference;  ///< what it must equal
  void (*paint)(const picture&);
  const char* peer;  ///< the contender that it is measured against; null for none
  double limit;      ///< of the time over the peer's
};

const contender contenders[] = {
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
};

bool verify(const contender& which, frame_size size) {
  const picture actual(size), expected(size);
  which.paint(actual);
  which.paint(expected);
  which.run(actual);
  which.reference(expected);
  if (std::memcmp(actual.luma(), expected.luma(), actual.bytes()) == 0) return true;
  std::fprintf(stderr, "%s differs from its reference at %s: not timed\n", which.name, size.name().c_str());
  return false;
}

/// Times the edit alone. It starts from the same picture every time: a mask that has greyed everything
/// once would find nothing to do, and an easy branch to predict.
void time_edit(benchmark::State& state, const contender& which, frame_size size) {
  const picture target(size), painted(size);
  which.paint(painted);
  std::memcpy(target.luma(), painted.luma(), painted.bytes());
  double total = 0;
  for ([[maybe_unused]] auto _ : state) {
    std::memcpy(target.chroma(), painted.chroma(), painted.chroma_bytes());
    const auto start = std::chrono::steady_clock::now();
    which.run(target);
    benchmark::ClobberMemory();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    state.SetIterationTime(seconds);
    total += seconds;
  }
  const double ns = total * 1e9 / static_cast<double>(state.iterations());
  state.counters["ps/pixel"] = ns * 1e3 / static_cast<double>(size.pixels());
  state.counters["frame%"] = 100 * ns / frame_ns;
}

void time_filter_init(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) filter_init(0.5, filter_match_red);
}

/// The console's report, and the medians in nanoseconds by name.
class median_reporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.aggregate_name == "median") medians[run.run_name.function_name] = run.GetAdjustedRealTime() * 1e3;
    }
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, double> medians;
};

void print_ratio(const std::string& what, double value, double limit) {
  std::printf("%-50s %6.2f  limit %4.2f%s\n", what.c_str(), value, limit, value > limit ? "  OVER" : "");
}

void print_ratios(std::map<std::string, double>& medians) {
  std::printf("\nRatios of the medians\n");
  const auto median = [&medians](const std::string& name, frame_size size) {
    return medians[name + "/" + size.name()];
  };
  for (const contender& which : contenders) {
    if (which.peer == nullptr) continue;
    for (const frame_size size : sizes) {
      const double own = median(which.name, size), peer = median(which.peer, size);
      if (own > 0 && peer > 0)
        print_ratio(which.name + (" / " + (which.peer + (" " + size.name()))), own / peer, which.limit);
    }
  }
  for (const contender& which : contenders) {
    const double small = median(which.name, sizes[1]), large = median(which.name, sizes[3]);
    const double growth = static_cast<double>(sizes[3].pixels()) / static_cast<double>(sizes[1].pixels());
    if (small > 0) print_ratio(std::string(which.name) + " per pixel, 2160p / 720p", large / small / growth, 1.3);
  }
}

}  // namespace

int main(int argc, char** argv) {
  filter_init(0.5, filter_match_red);
  for (const contender& which : contenders) {
    for (const frame_size size : sizes) {
      if (!verify(which, size)) return 1;
      benchmark::RegisterBenchmark((which.name + ("/" + size.name())).c_str(), time_edit, which, size)
          ->UseManualTime()
          ->Unit(benchmark::kMicrosecond)
          ->MinTime(0.05)
          ->Repetitions(15)
          ->ReportAggregatesOnly();
    }
  }
  benchmark::RegisterBenchmark("filter_init", time_filter_init)
      ->Unit(benchmark::kMicrosecond)
      ->Repetitions(9)
      ->ReportAggregatesOnly();
  // A machine's bad moments then meet a kernel and its peer alike.
  std::string interleave = "--benchmark_enable_random_interleaving=true";
  std::vector<char*> arguments(argv, argv + argc);
  arguments.insert(arguments.begin() + 1, interleave.data());
  arguments.push_back(nullptr);
  argc += 1;
  argv = arguments.data();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  median_reporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  print_ratios(reporter.medians);
  return 0;
}
