#include "platform/camera/brighten.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/camera/brighten.cpp"
#include "hwy/foreach_target.h"
// clang-format off
#include "hwy/highway.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace handset::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// A single lane cannot be viewed both as bytes and as pairs: plain C++ does it all.
std::size_t BrightenRows(std::uint8_t*, std::uint8_t*, std::uint8_t*, std::size_t) {
  return 0;
}

#else

using Lanes16 = hn::ScalableTag<std::uint16_t>;
using Vector16 = hn::Vec<Lanes16>;

HWY_INLINE Vector16 Factor(Lanes16 d, Vector16 luma) {
  return hn::Min(hn::Set(d, 350), hn::Sub(hn::Set(d, 511), luma));
}

/// Brightened luma in the upper byte of each lane; the lower byte is left over.
HWY_INLINE Vector16 BrightenLuma(Lanes16 d, Vector16 luma) {
  return hn::Add(hn::Mul(luma, Factor(d, luma)), hn::Set(d, 128));
}

/// Two luma samples per lane.
HWY_INLINE Vector16 BrightenPair(Lanes16 d, Vector16 pair) {
  const auto even = hn::ShiftRight<8>(BrightenLuma(d, hn::And(pair, hn::Set(d, 0x00FF))));
  const auto odd = hn::And(BrightenLuma(d, hn::ShiftRight<8>(pair)), hn::Set(d, 0xFF00));
  return hn::Or(even, odd);
}

/// One color difference per lane. @param factor  twice that of the block
HWY_INLINE Vector16 ScaleChroma(Lanes16 d, Vector16 value, hn::Vec<hn::RebindToSigned<Lanes16>> factor) {
  const hn::RebindToSigned<Lanes16> signed16;
  const auto middle = hn::Set(signed16, 128);
  const auto distance = hn::ShiftLeft<6>(hn::Sub(hn::BitCast(signed16, value), middle));
  // Rounds 64 distance * 2 factor / 2^15.
  const auto scaled = hn::Add(hn::MulFixedPoint15(distance, factor), middle);
  return hn::BitCast(d, hn::Min(hn::Max(scaled, hn::Zero(signed16)), hn::Set(signed16, 255)));
}

/// Two luma rows and their chroma row, whole vectors only.
/// @return columns done, a multiple of two
std::size_t BrightenRows(std::uint8_t* above, std::uint8_t* below, std::uint8_t* chroma, std::size_t width) {
  const Lanes16 d;
  const hn::RebindToSigned<Lanes16> signed16;
  const hn::Repartition<std::uint8_t, Lanes16> bytes;
  const auto low = hn::Set(d, 0x00FF);
  const std::size_t step = hn::Lanes(bytes);
  std::size_t x = 0;
  for (; x + step <= width; x += step) {
    const auto a = hn::BitCast(d, hn::LoadU(bytes, above + x));
    const auto b = hn::BitCast(d, hn::LoadU(bytes, below + x));
    const auto uv = hn::BitCast(d, hn::LoadU(bytes, chroma + x));
    const auto sum =
        hn::Add(hn::Add(hn::And(a, low), hn::ShiftRight<8>(a)), hn::Add(hn::And(b, low), hn::ShiftRight<8>(b)));
    const auto mean = hn::ShiftRight<2>(hn::Add(sum, hn::Set(d, 2)));
    const auto factor = hn::BitCast(signed16, hn::ShiftLeft<1>(Factor(d, mean)));
    const auto u = ScaleChroma(d, hn::And(uv, low), factor);
    const auto v = ScaleChroma(d, hn::ShiftRight<8>(uv), factor);
    hn::StoreU(hn::BitCast(bytes, hn::Or(u, hn::ShiftLeft<8>(v))), bytes, chroma + x);
    hn::StoreU(hn::BitCast(bytes, BrightenPair(d, a)), bytes, above + x);
    hn::StoreU(hn::BitCast(bytes, BrightenPair(d, b)), bytes, below + x);
  }
  return x;
}

#endif

}  // namespace handset::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace handset {
HWY_EXPORT(BrightenRows);

namespace {

int factor_of(int luma) {
  return std::min(350, 511 - luma);
}

void brighten_luma(std::uint8_t* sample) {
  *sample = static_cast<std::uint8_t>((*sample * factor_of(*sample) + 128) >> 8);
}

void scale_chroma(std::uint8_t* sample, int factor) {
  *sample = static_cast<std::uint8_t>(std::clamp(128 + (((*sample - 128) * factor + 128) >> 8), 0, 255));
}

}  // namespace

void brighten_reference(const BrightenPlanes& planes) {
  for (std::size_t row = 0; row < planes.height / 2; ++row) {
    std::uint8_t* above = planes.luma + static_cast<std::ptrdiff_t>(2 * row) * planes.luma_stride;
    std::uint8_t* below = above + planes.luma_stride;
    std::uint8_t* chroma = planes.chroma + static_cast<std::ptrdiff_t>(row) * planes.chroma_stride;
    for (std::size_t x = 0; x + 1 < planes.width; x += 2) {
      const int factor = factor_of((above[x] + above[x + 1] + below[x] + below[x + 1] + 2) >> 2);
      scale_chroma(chroma + x, factor);
      scale_chroma(chroma + x + 1, factor);
      for (std::uint8_t* sample : {above + x, above + x + 1, below + x, below + x + 1}) brighten_luma(sample);
    }
  }
}

void brighten(const BrightenPlanes& planes) {
  const auto brighten_rows = HWY_DYNAMIC_DISPATCH(BrightenRows);
  BrightenPlanes rest = planes;
  rest.height = 2;
  for (std::size_t row = 0; row + 1 < planes.height; row += 2) {
    const std::size_t done = brighten_rows(rest.luma, rest.luma + rest.luma_stride, rest.chroma, planes.width);
    if (done < planes.width) {
      brighten_reference(
          {rest.luma + done, rest.luma_stride, rest.chroma + done, rest.chroma_stride, planes.width - done, 2});
    }
    rest.luma += 2 * rest.luma_stride;
    rest.chroma += rest.chroma_stride;
  }
}

}  // namespace handset
#endif
