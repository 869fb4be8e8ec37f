#pragma once

#include <cstdint>
#include <vector>

namespace handset {

/// Rows of samples; each sample has one byte, or two for pairs.
struct SamplePlane {
  const std::uint8_t* samples;
  int stride;  ///< bytes
  int width;   ///< samples
  int height;
};

/// Scales one plane at a time bilinearly, aligning sample centers: enlarges by any factor, reduces to one half at most
/// in either direction. Flat areas keep their level exactly, which libyuv's scaling of 2023 does not: white came out as
/// 253. One thread at a time; allocates only when the sizes change.
class PlaneScaler {
 public:
  /// @param bytes_per_sample  1 or 2
  explicit PlaneScaler(int bytes_per_sample) : bytes_per_sample_(bytes_per_sample) {}

  /// @param target `width` by `height` samples, with room for whole groups of eight bytes in each row
  void scale(const SamplePlane& source, std::uint8_t* target, int stride, int width, int height);

  /// Eight bytes of the result: the row's bytes that each is mixed from.
  struct Group {
    std::int32_t first;      ///< byte of the row that `pick` is relative to
    std::uint8_t pick[16];   ///< the left one; the right one is one sample further. The upper half is unused
    std::uint16_t right[8];  ///< share of the right one, in 128ths
  };

 private:
  void prepare(int source_width, int width);

  const int bytes_per_sample_;
  int source_width_ = 0;
  int width_ = 0;
  std::vector<Group> groups_;
  std::vector<std::uint8_t> row_;  ///< two blended source rows, with room after them
};

/// Scalar reference for PlaneScaler, for tests.
void scale_plane_plainly(const SamplePlane& source, int bytes_per_sample, std::uint8_t* target, int stride, int width,
                         int height);

}  // namespace handset
