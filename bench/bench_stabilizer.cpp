// What stabilization costs a frame: finding its motion and choosing its view, and of that the halving of the luma. The
// halving is first compared with its reference; see README.md for the recipe.

#include <algorithm>
#include <cstdio>

#include "bench/bench_support.h"
#include "platform/camera/motion_kernels.h"
#include "platform/camera/stabilizer.h"
#include "tests/camera/textured_scene.h"

namespace {

using handset::Stabilizer;

TexturedScene make_scene(bench::frame_size size) {
  const camera_res_t canvas =
      Stabilizer::canvas_of({static_cast<unsigned>(size.width), static_cast<unsigned>(size.height)});
  return {static_cast<int>(canvas.width), static_cast<int>(canvas.height), 12};
}

/// Pictures of a scene that jumps to and fro by some pixels.
void stabilize(benchmark::State& state, bench::frame_size size) {
  TexturedScene scenes[2] = {make_scene(size), make_scene(size)};
  scenes[0].paint(0, 0, 1, 4);
  scenes[1].paint(9, -6, 1, 4);
  Stabilizer stabilizer({static_cast<unsigned>(size.width), static_cast<unsigned>(size.height)});
  std::int64_t frame = 0;
  for (auto _ : state) {
    TexturedScene& scene = scenes[frame % 2];
    benchmark::DoNotOptimize(stabilizer.next(scene.luma(), scene.width(), ++frame * 33'333'333));
  }
}

using Halve = decltype(handset::halve_plane);

void halve(benchmark::State& state, bench::frame_size size, Halve* run) {
  TexturedScene scene = make_scene(size);
  scene.paint(0, 0, 1, 4);
  std::vector<std::uint8_t> half(static_cast<std::size_t>(scene.width() / 2 * (scene.height() / 2)));
  for (auto _ : state) {
    run(scene.luma(), scene.width(), scene.width(), scene.height(), half.data(), scene.width() / 2);
    benchmark::ClobberMemory();
  }
}

bool halves_alike(bench::frame_size size) {
  TexturedScene scene = make_scene(size);
  scene.paint(0, 0, 1, 4);
  std::vector<std::uint8_t> halves[2];
  for (std::vector<std::uint8_t>& half : halves) {
    half.resize(static_cast<std::size_t>(scene.width() / 2 * (scene.height() / 2)));
    const auto run = &half == halves ? handset::halve_plane : handset::halve_plane_reference;
    run(scene.luma(), scene.width(), scene.width(), scene.height(), half.data(), scene.width() / 2);
  }
  return halves[0] == halves[1];
}

}  // namespace

int main(int argc, char** argv) {
  const auto add = [](const std::string& name, auto&& function) {
    benchmark::RegisterBenchmark(name.c_str(), function)
        ->Repetitions(15)
        ->ReportAggregatesOnly()
        ->Unit(benchmark::kMicrosecond)
        ->MeasureProcessCPUTime();
  };
  for (const bench::frame_size size : bench::sizes) {
    if (!halves_alike(size)) {
      std::fprintf(stderr, "halving differs from its reference at %s\n", size.name().c_str());
      return 1;
    }
    add("stabilize/" + size.name(), [size](benchmark::State& state) { stabilize(state, size); });
    add("halve/" + size.name(), [size](benchmark::State& state) { halve(state, size, handset::halve_plane); });
    add("halve plain/" + size.name(),
        [size](benchmark::State& state) { halve(state, size, handset::halve_plane_reference); });
  }
  return bench::run(argc, argv, {});
}
