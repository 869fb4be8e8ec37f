#pragma once

// Boxes of ISO/IEC 14496-12: a 32-bit size, a type, and with size 1 a 64-bit size behind them; all numbers big-endian.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace handset::mp4 {

using View = std::span<const std::uint8_t>;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t box_type(const char (&name)[5]) {
  std::uint32_t type = 0;
  for (int i = 0; i < 4; ++i) type = type << 8 | static_cast<std::uint8_t>(name[i]);
  return type;
}

/// The number in `bytes` bytes at `offset`; 0 where there are not so many.
inline std::uint64_t read_number(View data, std::size_t offset, std::size_t bytes) {
  if (data.size() < bytes || offset > data.size() - bytes) return 0;
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < bytes; ++i) value = value << 8 | data[offset + i];
  return value;
}

inline void append_number(Bytes* out, std::uint64_t value, std::size_t bytes) {
  for (std::size_t i = bytes; i-- > 0;) out->push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

inline void write_number(Bytes* out, std::size_t offset, std::uint64_t value, std::size_t bytes) {
  for (std::size_t i = bytes; i-- > 0; value >>= 8) out->at(offset + i) = static_cast<std::uint8_t>(value);
}

struct Header {
  std::uint64_t size = 0;  ///< of the whole box
  std::uint32_t type = 0;
  std::uint32_t length = 0;  ///< of the header: 8 or 16
};

/// Reads a header. @return false when `data` is too short for it, or the size makes no sense
inline bool read_header(View data, Header* header) {
  if (data.size() < 8) return false;
  *header = {read_number(data, 0, 4), static_cast<std::uint32_t>(read_number(data, 4, 4)), 8};
  if (header->size == 1) {
    if (data.size() < 16) return false;
    header->size = read_number(data, 8, 8);
    header->length = 16;
  }
  return header->size >= header->length;
}

struct Box {
  std::uint32_t type = 0;
  View whole;
  View content;
};

/// Takes the next box off the front of `rest`. @return false at its end, or where no whole box follows
inline bool next_box(View* rest, Box* box) {
  Header header;
  if (!read_header(*rest, &header) || header.size > rest->size()) return false;
  box->type = header.type;
  box->whole = rest->first(static_cast<std::size_t>(header.size));
  box->content = box->whole.subspan(header.length);
  *rest = rest->subspan(static_cast<std::size_t>(header.size));
  return true;
}

/// The content of the first child of a type; empty when there is none.
inline View child(View content, std::uint32_t type) {
  for (Box box; next_box(&content, &box);) {
    if (box.type == type) return box.content;
  }
  return {};
}

/// Writes a box around what is appended during its life.
class BoxWriter {
 public:
  BoxWriter(Bytes* out, std::uint32_t type) : out_(out), start_(out->size()) {
    append_number(out, 0, 4);
    append_number(out, type, 4);
  }
  BoxWriter(const BoxWriter&) = delete;
  BoxWriter& operator=(const BoxWriter&) = delete;
  ~BoxWriter() { write_number(out_, start_, out_->size() - start_, 4); }

 private:
  Bytes* out_;
  std::size_t start_;
};

}  // namespace handset::mp4
