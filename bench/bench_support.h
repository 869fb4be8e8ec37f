#pragma once

// What the benchmark programs share: pictures, edits with a reference and a peer, and the report of their ratios.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace bench {

struct frame_size {
  std::size_t width, height;
  std::string name() const { return std::to_string(width) + "x" + std::to_string(height); }
  std::size_t pixels() const { return width * height; }
};
inline constexpr frame_size sizes[] = {{640, 480}, {1280, 720}, {1920, 1080}, {3840, 2160}};

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

/// Soft coloured areas with a little sensor noise: what a mask sees of a real scene.
void paint_scene(const picture& target);
/// Every block in a cell of its own: no branch of a plain pass can be predicted.
void paint_noise(const picture& target);

using edit = void (*)(const picture&);

struct contender {
  const char* name;
  edit run;
  edit reference;  ///< what it must equal
  void (*paint)(const picture&);
  const char* peer;  ///< the contender that it is measured against; null for none
  double limit;      ///< of the time over the peer's
  /// Before every edit the whole picture is restored, not only its chroma. That takes a large picture through
  /// the caches, and so is for edits that mix with what luma they find.
  bool restores_luma = false;
};

/// Compares every contender with its reference at every size and registers it; a difference is reported.
/// @return whether all are equal
bool register_contenders(std::span<const contender> contenders);

/// The console's report, and the medians in nanoseconds by name.
class median_reporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
  std::map<std::string, double> medians;
};

/// Runs everything registered, mixed at random, so that a bad moment of the machine meets a contender and its
/// peer alike; then prints the contenders' ratios.
/// @return the program's exit code
int run(int argc, char** argv, std::span<const contender> contenders);

}  // namespace bench
