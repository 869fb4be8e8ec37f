#include "platform/cascades/plane_scaler.h"

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/cascades/plane_scaler.cpp"
#include "hwy/foreach_target.h"
// clang-format off
#include "hwy/highway.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace handset::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// (left * (128 - share) + right * share + 64) >> 7 always fits 16 bits.

/// @return bytes done
std::size_t MixRows(const std::uint8_t* upper, const std::uint8_t* lower, std::uint16_t share, std::uint8_t* out,
                    std::size_t count) {
  const hn::ScalableTag<std::uint16_t> d16;
  const hn::Rebind<std::int16_t, decltype(d16)> i16;
  const hn::Rebind<std::uint8_t, decltype(d16)> d8;
  const auto lower_share = hn::Set(d16, share);
  const auto upper_share = hn::Set(d16, static_cast<std::uint16_t>(128 - share));
  const auto half = hn::Set(d16, 64);
  std::size_t x = 0;
  for (; x + hn::Lanes(d16) <= count; x += hn::Lanes(d16)) {
    const auto a = hn::Mul(hn::PromoteTo(d16, hn::LoadU(d8, upper + x)), upper_share);
    const auto b = hn::Mul(hn::PromoteTo(d16, hn::LoadU(d8, lower + x)), lower_share);
    const auto mixed = hn::ShiftRight<7>(hn::Add(hn::Add(a, b), half));
    hn::StoreU(hn::DemoteTo(d8, hn::BitCast(i16, mixed)), d8, out + x);
  }
  return x;
}

/// @return groups done
std::size_t MixColumns(const std::uint8_t* row, std::size_t step, const PlaneScaler::Group* groups, std::size_t count,
                       std::uint8_t* out) {
#if HWY_TARGET == HWY_SCALAR
  static_cast<void>(row), static_cast<void>(step), static_cast<void>(groups), static_cast<void>(out);
  return count - count;  // a single lane has no lookup table
#else
  const hn::FixedTag<std::uint8_t, 16> d8;
  const hn::FixedTag<std::uint8_t, 8> d8_half;
  const hn::FixedTag<std::uint16_t, 8> d16;
  const hn::Rebind<std::int16_t, decltype(d16)> i16;
  const auto whole = hn::Set(d16, 128);
  const auto half = hn::Set(d16, 64);
  for (std::size_t i = 0; i < count; ++i) {
    const PlaneScaler::Group& group = groups[i];
    const auto pick = hn::LoadU(d8, group.pick);
    const auto share = hn::LoadU(d16, group.right);
    const std::uint8_t* from = row + group.first;
    const auto left = hn::LowerHalf(d8_half, hn::TableLookupBytes(hn::LoadU(d8, from), pick));
    const auto right = hn::LowerHalf(d8_half, hn::TableLookupBytes(hn::LoadU(d8, from + step), pick));
    const auto a = hn::Mul(hn::PromoteTo(d16, left), hn::Sub(whole, share));
    const auto b = hn::Mul(hn::PromoteTo(d16, right), share);
    const auto mixed = hn::ShiftRight<7>(hn::Add(hn::Add(a, b), half));
    hn::StoreU(hn::DemoteTo(d8_half, hn::BitCast(i16, mixed)), d8_half, out + 8 * i);
  }
  return count;
#endif
}

}  // namespace handset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace handset {
namespace {

HWY_EXPORT(MixRows);
HWY_EXPORT(MixColumns);

/// How far a group's lookup reaches past the last sample.
constexpr std::size_t row_margin = 64;

std::uint8_t mix(int first, int second, int share) {
  return static_cast<std::uint8_t>((first * (128 - share) + second * share + 64) >> 7);
}

/// The center of a result sample, in source samples.
struct Place {
  int first;  ///< the sample at or before it
  int share;  ///< of the next sample, in 128ths; 0 at the last one
};

Place place(int index, int source, int target) {
  const std::int64_t at = (std::int64_t{2} * index + 1) * source * 64 / target - 64;  // in 1/128
  if (at <= 0) return {0, 0};
  const int first = static_cast<int>(at / 128);
  return first >= source - 1 ? Place{source - 1, 0} : Place{first, static_cast<int>(at % 128)};
}

}  // namespace

void PlaneScaler::prepare(int source_width, int width) {
  if (source_width == source_width_ && width == width_) return;
  source_width_ = source_width;
  width_ = width;
  row_.assign(static_cast<std::size_t>(source_width) * bytes_per_sample_ + row_margin, 0);
  const int samples = 8 / bytes_per_sample_;
  groups_.assign((width + samples - 1) / samples, {});
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    Group& group = groups_[i];
    const int start = static_cast<int>(i) * samples;
    group.first = place(start, source_width, width).first * bytes_per_sample_;
    for (int byte = 0; byte < 8; ++byte) {
      // What lies past the row's end is computed but never seen.
      const Place at = place(std::min(start + byte / bytes_per_sample_, width - 1), source_width, width);
      group.pick[byte] =
          static_cast<std::uint8_t>(at.first * bytes_per_sample_ + byte % bytes_per_sample_ - group.first);
      group.right[byte] = static_cast<std::uint16_t>(at.share);
    }
  }
}

void PlaneScaler::scale(const SamplePlane& source, std::uint8_t* target, int stride, int width, int height) {
  prepare(source.width, width);
  const auto mix_rows = HWY_DYNAMIC_DISPATCH(MixRows);
  const auto mix_columns = HWY_DYNAMIC_DISPATCH(MixColumns);
  const std::size_t bytes = static_cast<std::size_t>(source.width) * bytes_per_sample_;
  for (int y = 0; y < height; ++y, target += stride) {
    const Place at = place(y, source.height, height);
    const std::uint8_t* upper = source.samples + static_cast<std::ptrdiff_t>(at.first) * source.stride;
    const std::uint8_t* lower = at.share > 0 ? upper + source.stride : upper;
    for (std::size_t x = mix_rows(upper, lower, static_cast<std::uint16_t>(at.share), row_.data(), bytes); x < bytes;
         ++x) {
      row_[x] = mix(upper[x], lower[x], at.share);
    }
    for (std::size_t i = mix_columns(row_.data(), bytes_per_sample_, groups_.data(), groups_.size(), target);
         i < groups_.size(); ++i) {
      for (int byte = 0; byte < 8; ++byte) {
        const std::uint8_t* left = row_.data() + groups_[i].first + groups_[i].pick[byte];
        target[8 * i + byte] = mix(left[0], left[bytes_per_sample_], groups_[i].right[byte]);
      }
    }
  }
}

void scale_plane_plainly(const SamplePlane& source, int bytes_per_sample, std::uint8_t* target, int stride, int width,
                         int height) {
  const auto sample = [&](int x, int y, int byte) -> int {
    return source.samples[static_cast<std::ptrdiff_t>(y) * source.stride + x * bytes_per_sample + byte];
  };
  for (int y = 0; y < height; ++y) {
    const Place v = place(y, source.height, height);
    const int below = std::min(v.first + 1, source.height - 1);
    for (int x = 0; x < width; ++x) {
      const Place h = place(x, source.width, width);
      const int right = std::min(h.first + 1, source.width - 1);
      for (int byte = 0; byte < bytes_per_sample; ++byte) {
        const int left_mix = mix(sample(h.first, v.first, byte), sample(h.first, below, byte), v.share);
        const int right_mix = mix(sample(right, v.first, byte), sample(right, below, byte), v.share);
        target[static_cast<std::ptrdiff_t>(y) * stride + x * bytes_per_sample + byte] =
            mix(left_mix, right_mix, h.share);
      }
    }
  }
}

}  // namespace handset
#endif
