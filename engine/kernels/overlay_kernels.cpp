#include "engine/kernels/overlay_kernels.h"

#include <algorithm>

#include "engine/kernels/reference.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "engine/kernels/overlay_kernels.cpp"
#include "hwy/foreach_target.h"
// clang-format off
#include "hwy/highway.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace kernels::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// One lane cannot be looked at as bytes and as pairs: plain C++ does it all.
std::size_t BlendRowPair(const blend_planes&, std::size_t) {
  return 0;
}

#else

#if HWY_ARCH_X86

/// Products of bytes and signed bytes, pairs of them added.
inline __m128i AddedProducts(__m128i bytes, __m128i signed_bytes) {
  return _mm_maddubs_epi16(bytes, signed_bytes);
}
inline __m128i Packed(__m128i lower, __m128i upper) {
  return _mm_packus_epi16(lower, upper);
}
#if HWY_TARGET <= HWY_AVX2
inline __m256i AddedProducts(__m256i bytes, __m256i signed_bytes) {
  return _mm256_maddubs_epi16(bytes, signed_bytes);
}
inline __m256i Packed(__m256i lower, __m256i upper) {
  return _mm256_packus_epi16(lower, upper);
}
#endif
#if HWY_TARGET <= HWY_AVX3
inline __m512i AddedProducts(__m512i bytes, __m512i signed_bytes) {
  return _mm512_maddubs_epi16(bytes, signed_bytes);
}
inline __m512i Packed(__m512i lower, __m512i upper) {
  return _mm512_packus_epi16(lower, upper);
}
#endif

/// ((255 - alpha) * background + alpha * overlay) >> 8. The opacities are the multiplication's bytes; both pictures
/// are made signed by taking off 128, which takes 255 * 128 off the sum and keeps it within 16 bits.
template <class D8, class V8 = hn::Vec<D8>>
V8 Mix(D8 d8, V8 background, V8 overlay, V8 alpha) {
  const hn::RepartitionToWide<D8> d16;
  using vector16 = hn::Vec<decltype(d16)>;
  const auto half = hn::Set(d8, 128);
  const auto b = hn::Xor(background, half), o = hn::Xor(overlay, half), rest = hn::Not(alpha);
  const auto shifted = [d16](auto sum) { return hn::ShiftRight<8>(hn::Add(vector16{sum}, hn::Set(d16, 255 * 128))); };
  const auto lower =
      shifted(AddedProducts(hn::InterleaveLower(d8, rest, alpha).raw, hn::InterleaveLower(d8, b, o).raw));
  const auto upper =
      shifted(AddedProducts(hn::InterleaveUpper(d8, rest, alpha).raw, hn::InterleaveUpper(d8, b, o).raw));
  return V8{Packed(lower.raw, upper.raw)};
}

#else

/// ((255 - alpha) * background + alpha * overlay) >> 8 as 255 * background + alpha * (overlay - background):
/// the sum fits 16 bits, so wrapping on the way there does no harm.
template <class D8, class V8 = hn::Vec<D8>>
V8 Mix(D8 d8, V8 background, V8 overlay, V8 alpha) {
  const hn::RepartitionToWide<D8> d16;
  const auto low_byte = hn::Set(d16, 0x00FF);
  const auto b = hn::BitCast(d16, background), o = hn::BitCast(d16, overlay), a = hn::BitCast(d16, alpha);
  const auto b_even = hn::And(b, low_byte), b_odd = hn::ShiftRight<8>(b);
  const auto even = hn::Add(hn::Sub(hn::ShiftLeft<8>(b), b_even),
                            hn::Mul(hn::And(a, low_byte), hn::Sub(hn::And(o, low_byte), b_even)));
  const auto odd = hn::Add(hn::Sub(hn::AndNot(low_byte, b), b_odd),
                           hn::Mul(hn::ShiftRight<8>(a), hn::Sub(hn::ShiftRight<8>(o), b_odd)));
  return hn::BitCast(d8, hn::Or(hn::ShiftRight<8>(even), hn::AndNot(low_byte, odd)));
}

#endif

/// One row of luma, or of chroma pairs.
struct blend_row {
  const std::uint8_t* background;
  const std::uint8_t* overlay;
  const std::uint8_t* alpha;  ///< of each sample; null where the blocks' counts
  const std::uint8_t* block_alpha;
  std::uint8_t* target;
};

/// Opacity of both samples of each block.
template <class D8, class VBlocks>
hn::Vec<D8> OfBoth(D8 d8, VBlocks blocks) {
  const hn::RepartitionToWide<D8> d16;
  const auto block = hn::PromoteTo(d16, blocks);
  return hn::BitCast(d8, hn::Or(block, hn::ShiftLeft<8>(block)));
}

/// From sample x on, as many whole vectors as there are.
/// @tparam some_opaque  looks for opaque blocks, which a row may be known to have none of
/// @return the sample it has come to
template <bool luma, bool some_opaque, class D8>
std::size_t BlendVectors(D8 d8, const blend_row& row, std::size_t x, std::size_t count) {
  const hn::Rebind<std::uint8_t, hn::RepartitionToWide<D8>> d8_blocks;
  for (; x + hn::Lanes(d8) <= count; x += hn::Lanes(d8)) {
    const auto blocks = hn::LoadU(d8_blocks, row.block_alpha + x / 2);
    const auto overlay = hn::LoadU(d8, row.overlay + x);
    const auto opaque_blocks = hn::Eq(blocks, hn::Set(d8_blocks, 255));
    if (some_opaque && hn::AllTrue(d8_blocks, opaque_blocks)) {
      hn::StoreU(overlay, d8, row.target + x);
      continue;
    }
    hn::Vec<D8> alpha;
    if constexpr (luma) {
      alpha = hn::LoadU(d8, row.alpha + x);
    } else {
      alpha = OfBoth(d8, blocks);
    }
    auto mixed = Mix(d8, hn::LoadU(d8, row.background + x), overlay, alpha);
    if (some_opaque && !hn::AllFalse(d8_blocks, opaque_blocks))
      mixed = hn::IfThenElse(hn::Eq(OfBoth(d8, blocks), hn::Set(d8, 255)), overlay, mixed);
    hn::StoreU(mixed, d8, row.target + x);
  }
  return x;
}

/// A second round with short vectors leaves little to the plain code.
template <bool luma, bool some_opaque>
std::size_t BlendRow(const blend_row& row, std::size_t count) {
  const std::size_t done = BlendVectors<luma, some_opaque>(hn::ScalableTag<std::uint8_t>(), row, 0, count);
  return BlendVectors<luma, some_opaque>(hn::CappedTag<std::uint8_t, 16>(), row, done, count);
}

bool AnyOpaque(const std::uint8_t* block_alpha, std::size_t blocks) {
  const hn::ScalableTag<std::uint8_t> d8;
  auto most = hn::Zero(d8);
  std::size_t x = 0;
  for (; x + hn::Lanes(d8) <= blocks; x += hn::Lanes(d8)) most = hn::Max(most, hn::LoadU(d8, block_alpha + x));
  if (!hn::AllFalse(d8, hn::Eq(most, hn::Set(d8, 255)))) return true;
  return std::find(block_alpha + x, block_alpha + blocks, 255) != block_alpha + blocks;
}

/// Two rows of luma and theirs of chroma, one after the other: the CPU follows few streams of memory better
/// than many, which matters more than reading the blocks' opacities three times.
/// @return columns done
template <bool some_opaque>
std::size_t BlendRows(const blend_planes& at, std::size_t columns) {
  std::uint8_t* const below = at.frame_luma + at.frame_stride;
  BlendRow<true, some_opaque>({at.frame_luma, at.luma, at.alpha, at.chroma_alpha, at.frame_luma}, columns);
  BlendRow<true, some_opaque>({below, at.luma + at.stride, at.alpha + at.stride, at.chroma_alpha, below}, columns);
  return BlendRow<false, some_opaque>({at.background_chroma, at.chroma, nullptr, at.chroma_alpha, at.frame_chroma},
                                      columns);
}

std::size_t BlendRowPair(const blend_planes& at, std::size_t columns) {
  return AnyOpaque(at.chroma_alpha, columns / 2) ? BlendRows<true>(at, columns) : BlendRows<false>(at, columns);
}

#endif

#if HWY_HAVE_FLOAT64 && HWY_TARGET != HWY_SCALAR

using lanes64 = hn::ScalableTag<double>;
using vector64 = hn::Vec<lanes64>;

/// Truncated to bytes as reference::yuv_for_rgb does.
void StoreBytes(vector64 value, std::uint8_t* to) {
  const lanes64 d64;
  const hn::Rebind<std::int32_t, lanes64> d32;
  const hn::Rebind<std::uint8_t, lanes64> d8;
  const auto bounded = hn::Min(hn::Max(value, hn::Zero(d64)), hn::Set(d64, 255.0));
  hn::StoreU(hn::DemoteTo(d8, hn::DemoteTo(d32, bounded)), d8, to);
}

/// Whole vectors of one row: the very operations of reference::yuv_for_rgb in their order.
/// @return pixels done
std::size_t ConvertRow(const std::uint8_t* bgra, std::size_t count, std::uint8_t* luma, std::uint8_t* u,
                       std::uint8_t* v) {
  const lanes64 d64;
  const hn::Rebind<std::int32_t, lanes64> d32;
  const hn::Repartition<std::uint8_t, decltype(d32)> d8;
  const auto low_byte = hn::Set(d32, 0xFF);
  const auto times = [d64](double factor, vector64 value) { return hn::Mul(hn::Set(d64, factor), value); };
  std::size_t x = 0;
  for (; x + hn::Lanes(d64) <= count; x += hn::Lanes(d64)) {
    const auto pixels = hn::BitCast(d32, hn::LoadU(d8, bgra + 4 * x));
    const auto blue = hn::PromoteTo(d64, hn::And(pixels, low_byte));
    const auto green = hn::PromoteTo(d64, hn::And(hn::ShiftRight<8>(pixels), low_byte));
    const auto red = hn::PromoteTo(d64, hn::And(hn::ShiftRight<16>(pixels), low_byte));
    StoreBytes(hn::Add(hn::Add(times(0.299, red), times(0.587, green)), times(0.114, blue)), luma + x);
    const auto middle = hn::Set(d64, 128.0);
    const auto blueness = hn::Add(hn::Sub(times(-0.169, red), times(0.331, green)), times(0.499, blue));
    StoreBytes(hn::Add(blueness, middle), u + x);
    const auto redness = hn::Sub(hn::Sub(times(0.499, red), times(0.418, green)), times(0.0813, blue));
    StoreBytes(hn::Add(redness, middle), v + x);
  }
  return x;
}

#else

std::size_t ConvertRow(const std::uint8_t*, std::size_t, std::uint8_t*, std::uint8_t*, std::uint8_t*) {
  return 0;
}

#endif

}  // namespace kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {
HWY_EXPORT(BlendRowPair);
HWY_EXPORT(ConvertRow);

namespace {

/// Columns of U and V that wait for their blocks' second row.
constexpr std::size_t round_columns = 1024;

struct converted_row {
  std::uint8_t u[round_columns], v[round_columns];
};

void convert_row(const std::uint8_t* bgra, std::size_t count, std::uint8_t* luma, std::uint8_t* alpha,
                 converted_row& chroma) {
  for (std::size_t x = HWY_DYNAMIC_DISPATCH(ConvertRow)(bgra, count, luma, chroma.u, chroma.v); x < count; ++x) {
    const reference::yuv color = reference::yuv_for_rgb(bgra[4 * x + 2], bgra[4 * x + 1], bgra[4 * x]);
    luma[x] = color.luma;
    chroma.u[x] = color.u;
    chroma.v[x] = color.v;
  }
  for (std::size_t x = 0; x < count; ++x) alpha[x] = bgra[4 * x + 3];
}

std::uint8_t block_mean(const std::uint8_t* above, const std::uint8_t* below) {
  return static_cast<std::uint8_t>((above[0] + above[1] + below[0] + below[1]) >> 2);
}

/// At most round_columns of one row pair; the planes are at their first samples.
void convert_round(const std::uint8_t* pixels, std::ptrdiff_t stride, std::size_t count, std::size_t row_length,
                   const converted_planes& to) {
  converted_row above, below;
  convert_row(pixels, count, to.luma, to.alpha, above);
  convert_row(pixels + stride, count, to.luma + row_length, to.alpha + row_length, below);
  for (std::size_t x = 0; x < count; x += 2) {
    to.chroma[x] = block_mean(above.u + x, below.u + x);
    to.chroma[x + 1] = block_mean(above.v + x, below.v + x);
    to.chroma_alpha[x / 2] = block_mean(to.alpha + x, to.alpha + row_length + x);
  }
}

blend_planes moved(blend_planes at, std::ptrdiff_t columns, std::ptrdiff_t row_pairs) {
  at.luma += 2 * row_pairs * at.stride + columns;
  at.alpha += 2 * row_pairs * at.stride + columns;
  at.chroma += row_pairs * at.stride + columns;
  at.chroma_alpha += (row_pairs * at.stride + columns) / 2;
  at.frame_luma += 2 * row_pairs * at.frame_stride + columns;
  at.frame_chroma += row_pairs * at.frame_chroma_stride + columns;
  at.background_chroma += row_pairs * at.frame_chroma_stride + columns;
  return at;
}

}  // namespace

void blend(const blend_planes& planes, std::size_t columns, std::size_t rows) {
  const auto blend_row_pair = HWY_DYNAMIC_DISPATCH(BlendRowPair);
  blend_planes at = planes;
  for (std::size_t row = 0; row < rows; row += 2, at = moved(at, 0, 1)) {
    const std::size_t done = blend_row_pair(at, columns);
    if (done < columns) reference::blend(moved(at, static_cast<std::ptrdiff_t>(done), 0), columns - done, 2);
  }
}

void convert_bgra(const std::uint8_t* pixels, std::ptrdiff_t stride, std::size_t columns, std::size_t rows,
                  const converted_planes& planes) {
  for (std::size_t row = 0; row < rows; row += 2, pixels += 2 * stride) {
    for (std::size_t x = 0; x < columns; x += round_columns) {
      const std::size_t at = row * columns + x, block = row / 2 * columns + x;
      convert_round(pixels + 4 * x, stride, std::min(round_columns, columns - x), columns,
                    {planes.luma + at, planes.chroma + block, planes.alpha + at, planes.chroma_alpha + block / 2});
    }
  }
}

}  // namespace kernels
#endif
