#include "bench/bench_support.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>

namespace bench {
namespace {

constexpr double frame_ns = 1e9 / 30;

std::uint8_t wave(double middle, double swing, double phase, unsigned noise) {
  return static_cast<std::uint8_t>(middle + swing * std::sin(phase) + noise);
}

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
    if (which.restores_luma) std::memcpy(target.luma(), painted.luma(), painted.size.pixels());
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

/// @param limit  0 for none
void print_ratio(const std::string& what, double value, double limit) {
  std::printf("%-50s %6.2f", what.c_str(), value);
  if (limit > 0) std::printf("  limit %4.2f%s", limit, value > limit ? "  OVER" : "");
  std::printf("\n");
}

void print_ratios(std::span<const contender> contenders, std::map<std::string, double>& medians) {
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
    if (small > 0 && large > 0)
      print_ratio(std::string(which.name) + " per pixel, 2160p / 720p", large / small / growth,
                  which.peer != nullptr ? 1.3 : 0);
  }
}

}  // namespace

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

void paint_noise(const picture& target) {
  std::minstd_rand random(4);
  for (std::size_t i = 0; i < target.bytes(); ++i) target.luma()[i] = static_cast<std::uint8_t>(random() >> 8);
}

bool register_contenders(std::span<const contender> contenders) {
  for (const contender& which : contenders) {
    for (const frame_size size : sizes) {
      if (!verify(which, size)) return false;
      benchmark::RegisterBenchmark((which.name + ("/" + size.name())).c_str(), time_edit, which, size)
          ->UseManualTime()
          ->Unit(benchmark::kMicrosecond)
          ->MinTime(0.05)
          ->Repetitions(15)
          ->ReportAggregatesOnly();
    }
  }
  return true;
}

void median_reporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.aggregate_name == "median") medians[run.run_name.function_name] = run.GetAdjustedRealTime() * 1e3;
  }
  ConsoleReporter::ReportRuns(runs);
}

int run(int argc, char** argv, std::span<const contender> contenders) {
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
  print_ratios(contenders, reporter.medians);
  return 0;
}

}  // namespace bench
