#include "engine/kernels/color_kernels.h"

#include <algorithm>
#include <cstring>

#include "engine/kernels/reference.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "engine/kernels/color_kernels.cpp"
#include "hwy/foreach_target.h"
// clang-format off
#include "hwy/highway.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace kernels::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// One lane cannot be looked at as bytes and as pairs: plain C++ does it all.

void FillPairsRow(std::uint8_t* row, std::size_t bytes, std::uint16_t pair) {
  for (std::size_t x = 0; x < bytes; x += 2) std::memcpy(row + x, &pair, 2);
}

std::size_t KeepColorRow(const std::uint8_t*, const std::uint8_t*, std::uint8_t*, std::size_t, const color_mask&) {
  return 0;
}

#else

using lanes16 = hn::ScalableTag<std::uint16_t>;

/// `bytes` is even.
void FillPairsRow(std::uint8_t* row, std::size_t bytes, std::uint16_t pair) {
  const lanes16 d16;
  const hn::Repartition<std::uint8_t, lanes16> d8;
  const std::size_t step = hn::Lanes(d8);
  const auto pattern = hn::BitCast(d8, hn::Set(d16, pair));
  if (bytes < step) {
    for (std::size_t x = 0; x < bytes; x += 2) std::memcpy(row + x, &pair, 2);
    return;
  }
  std::size_t x = 0;
  for (; x + 4 * step <= bytes; x += 4 * step) {
    hn::StoreU(pattern, d8, row + x);
    hn::StoreU(pattern, d8, row + x + step);
    hn::StoreU(pattern, d8, row + x + 2 * step);
    hn::StoreU(pattern, d8, row + x + 3 * step);
  }
  for (; x + step <= bytes; x += step) hn::StoreU(pattern, d8, row + x);
  hn::StoreU(pattern, d8, row + bytes - step);
}

/// Blocks that one round of KeepColorRow takes: its cells fit well into the first-level cache, and by the
/// time they are read again in another width the CPU's store queue has drained.
constexpr std::size_t round_blocks = 512;

/// Cells of one round's vectors that have to be looked up: first the index of the mask's byte, then the byte itself;
/// and the bit that counts.
struct round_cells {
  HWY_ALIGN std::uint16_t byte[round_blocks];
  HWY_ALIGN std::uint16_t bit[round_blocks];
  std::uint16_t block[round_blocks];  ///< of the round, in which each vector begins; one for a vector
};

/// Whether the mask keeps a color like that of one of these blocks, whatever their luma.
template <class V16>
bool MayKeep(V16 uv, const color_mask& mask) {
  const lanes16 d16;
  const hn::Repartition<std::uint8_t, lanes16> d8;
  alignas(16) static constexpr std::uint8_t powers[16] = {1, 1, 2, 2, 4, 4, 8, 8, 16, 16, 32, 32, 64, 64, 128, 128};
  const auto levels = hn::BitCast(d8, hn::And(hn::ShiftRight<4>(uv), hn::Set(d16, 0x0F0F)));
  const auto kept = hn::BitCast(d16, hn::TableLookupBytes(hn::LoadDup128(d8, mask.hues), levels));
  const auto own = hn::BitCast(d16, hn::TableLookupBytes(hn::LoadDup128(d8, powers), levels));
  return !hn::AllTrue(d16, hn::Eq(hn::And(kept, hn::ShiftRight<8>(own)), hn::Zero(d16)));
}

/// Cells of one vector of blocks.
template <class V16>
void FindCells(const std::uint8_t* above, const std::uint8_t* below, V16 uv, std::uint16_t* byte, std::uint16_t* bit) {
  const lanes16 d16;
  const hn::Repartition<std::uint8_t, lanes16> d8;
  alignas(16) static constexpr std::uint8_t powers[16] = {1, 2, 4, 8, 16, 32, 64, 128};
  const auto low_byte = hn::Set(d16, 0x00FF);
  const auto a = hn::BitCast(d16, hn::LoadU(d8, above));
  const auto b = hn::BitCast(d16, hn::LoadU(d8, below));
  const auto sum =
      hn::Add(hn::Add(hn::And(a, low_byte), hn::ShiftRight<8>(a)), hn::Add(hn::And(b, low_byte), hn::ShiftRight<8>(b)));
  const auto u_v = hn::Or(hn::ShiftLeft<2>(hn::And(uv, hn::Set(d16, 0x00F8))), hn::ShiftRight<11>(uv));
  hn::Store(hn::Or(u_v, hn::And(hn::ShiftLeft<2>(sum), hn::Set(d16, 0x0C00))), d16, byte);
  // The odd bytes look up power 0 as well, which sets a bit that no byte of the mask has.
  const auto bit_number = hn::BitCast(d8, hn::And(hn::ShiftRight<5>(sum), hn::Set(d16, 7)));
  hn::Store(hn::BitCast(d16, hn::TableLookupBytes(hn::LoadDup128(d8, powers), bit_number)), d16, bit);
}

/// Greys at once what has no color that is kept at any luma, and finds the cells of the rest.
/// @return blocks whose cells were found, whole vectors
std::size_t SortBlocks(const std::uint8_t* above, const std::uint8_t* below, std::uint8_t* chroma, std::size_t count,
                       const color_mask& mask, round_cells& cells) {
  const lanes16 d16;
  const hn::Repartition<std::uint8_t, lanes16> d8;
  const std::size_t step = hn::Lanes(d16);
  std::size_t found = 0;
  for (std::size_t i = 0; i < count; i += step) {
    const auto uv = hn::BitCast(d16, hn::LoadU(d8, chroma + 2 * i));
    if (MayKeep(uv, mask)) {
      FindCells(above + 2 * i, below + 2 * i, uv, cells.byte + found, cells.bit + found);
      cells.block[found / step] = static_cast<std::uint16_t>(i);
      found += step;
    } else {
      hn::StoreU(hn::Set(d8, 0x7F), d8, chroma + 2 * i);
    }
  }
  return found;
}

/// One by one, which is faster than gathering. `count` is whole vectors, of eight lanes at least.
void LookUpCells(const std::uint8_t* mask, std::size_t count, round_cells& cells) {
  for (std::size_t i = 0; i < count; i += 4) {
    const std::uint64_t four[] = {mask[cells.byte[i]], mask[cells.byte[i + 1]], mask[cells.byte[i + 2]],
                                  mask[cells.byte[i + 3]]};
    const std::uint64_t packed = four[0] | four[1] << 16 | four[2] << 32 | four[3] << 48;
    std::memcpy(cells.byte + i, &packed, sizeof packed);
  }
}

void GreyCells(const round_cells& cells, std::size_t count, std::uint8_t* chroma) {
  const lanes16 d16;
  const hn::Repartition<std::uint8_t, lanes16> d8;
  for (std::size_t i = 0; i < count; i += hn::Lanes(d16)) {
    const auto grey = hn::Eq(hn::And(hn::Load(d16, cells.byte + i), hn::Load(d16, cells.bit + i)), hn::Zero(d16));
    std::uint8_t* const at = chroma + 2 * std::size_t{cells.block[i / hn::Lanes(d16)]};
    const auto uv = hn::BitCast(d16, hn::LoadU(d8, at));
    hn::StoreU(hn::BitCast(d8, hn::IfThenElse(grey, hn::Set(d16, 0x7F7F), uv)), d8, at);
  }
}

/// One chroma row and its two luma rows, whole vectors only.
/// @return columns done, a multiple of two
std::size_t KeepColorRow(const std::uint8_t* above, const std::uint8_t* below, std::uint8_t* chroma, std::size_t width,
                         const color_mask& mask) {
  const std::size_t step = hn::Lanes(lanes16());
  const std::size_t blocks = width / 2 / step * step;
  round_cells cells;
  for (std::size_t first = 0; first < blocks; first += round_blocks) {
    const std::size_t count = std::min(round_blocks, blocks - first);
    const std::size_t found = SortBlocks(above + 2 * first, below + 2 * first, chroma + 2 * first, count, mask, cells);
    LookUpCells(mask.cells, found, cells);
    GreyCells(cells, found, chroma + 2 * first);
  }
  return 2 * blocks;
}

#endif

}  // namespace kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kernels {
HWY_EXPORT(FillPairsRow);
HWY_EXPORT(KeepColorRow);

namespace {
/// The C library's memset is as fast as vectors get, and faster where it owns whole cache lines without
/// reading them; but asked for megabytes at once it may write around the caches, and takes far longer.
constexpr std::size_t memset_bytes = 65536;
}  // namespace

color_mask::color_mask(const std::uint8_t* table) : cells(table) {
  constexpr std::size_t slab = mask_size / 4;
  for (std::size_t i = 0; i < slab; i += 4) {
    std::uint32_t any = 0;  // of four levels of V, over all levels of luma
    for (std::size_t first = 0; first < mask_size; first += slab) {
      std::uint32_t four;
      std::memcpy(&four, table + first + i, 4);
      any |= four;
    }
    hues[i / 64] = static_cast<std::uint8_t>(hues[i / 64] | (any != 0) << (i / 4 % 8));
  }
}

void fill_bytes(std::uint8_t* plane, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t value) {
  if (stride == static_cast<std::ptrdiff_t>(width)) {
    width *= rows;
    rows = 1;
  }
  for (std::size_t row = 0; row < rows; ++row, plane += stride) {
    for (std::size_t x = 0; x < width; x += memset_bytes)
      std::memset(plane + x, value, std::min(memset_bytes, width - x));
  }
}

void fill_pairs(std::uint8_t* chroma, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t u,
                std::uint8_t v) {
  std::size_t bytes = (width + 1) / 2 * 2;
  if (stride == static_cast<std::ptrdiff_t>(bytes)) {
    bytes *= rows;
    rows = 1;
  }
  const auto pair = static_cast<std::uint16_t>(u | v << 8);
  const auto fill_row = HWY_DYNAMIC_DISPATCH(FillPairsRow);
  for (std::size_t row = 0; row < rows; ++row, chroma += stride) fill_row(chroma, bytes, pair);
}

void keep_color(const std::uint8_t* luma, std::ptrdiff_t luma_stride, std::uint8_t* chroma,
                std::ptrdiff_t chroma_stride, std::size_t width, std::size_t height, const color_mask& mask) {
  const auto keep_row = HWY_DYNAMIC_DISPATCH(KeepColorRow);
  for (std::size_t row = 0; row < height / 2; ++row, luma += 2 * luma_stride, chroma += chroma_stride) {
    const std::size_t done = keep_row(luma, luma + luma_stride, chroma, width, mask);
    if (done < width) {
      reference::keep_color(luma + done, luma_stride, chroma + done, chroma_stride, width - done, 2, mask);
    }
  }
}
}  // namespace kernels
#endif
