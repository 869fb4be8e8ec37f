#include <gtest/gtest.h>

#include <filesystem>

#include "platform/camera/mp4_compact.h"
#include "tests/support/film.h"
#include "tests/support/temp_dir.h"

namespace {

std::string number(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = bytes - 1; i >= 0; --i) text.push_back(static_cast<char>(value >> (8 * i)));
  return text;
}

std::string box(const std::string& type, const std::string& content) {
  return number(content.size() + 8, 4) + type + content;
}

/// An index with one 32-bit and one 64-bit table that point at two bytes of the media.
std::string index_of(std::uint64_t first, std::uint64_t second) {
  const std::string narrow = box("stco", number(0, 4) + number(1, 4) + number(first, 4));
  const std::string wide = box("co64", number(0, 4) + number(1, 4) + number(second, 8));
  const auto track = [](const std::string& table) {
    return box("trak", box("tkhd", "x") + box("mdia", box("minf", box("stbl", box("stsz", "abcd") + table))));
  };
  return box("moov", box("mvhd", "head") + track(narrow) + track(wide));
}

struct Sample {
  std::string type = box("ftyp", "isom0000");
  std::string media = number(1, 4) + "mdat" + number(16 + 3000, 8) + std::string(2998, 'm') + "PQ";
  std::size_t hole = 100000;

  std::string file() const {
    const std::size_t start = type.size() + index_of(0, 0).size() + hole + 8;
    return type + index_of(start + 16 + 2998, start + 16 + 2999) + box("free", std::string(hole, '\0')) + media;
  }
};

TEST(Mp4Compact, RemovesTheHoleAndMovesEveryChunkOffset) {
  const TempDir dir;
  const std::string path = dir.file("film.mp4");
  const Sample sample;
  write_file(path, sample.file());
  ASSERT_EQ(handset::compact_mp4(path), 0);
  const std::size_t start = sample.type.size() + index_of(0, 0).size();
  EXPECT_EQ(read_file(path), sample.type + index_of(start + 16 + 2998, start + 16 + 2999) + sample.media);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1) << "something was left behind";
}

TEST(Mp4Compact, LeavesAloneWhatItDoesNotKnowOrNeedNotTouch) {
  Sample small;
  small.hole = 50;
  const std::string whole = Sample().file();
  const std::string broken_offsets =
      Sample().type + index_of(3, 4) + box("free", std::string(90000, 0)) + Sample().media;
  std::string huge_table = whole;
  huge_table.replace(huge_table.find("stco") + 8, 4, "\xff\xff\xff\xff");
  const struct {
    const char* name;
    std::string content;
    int result;
  } cases[] = {
      {"a small hole", small.file(), 0},
      {"cut off", whole.substr(0, whole.size() - 10), EINVAL},
      {"fragmented", whole + box("moof", "x"), EINVAL},
      {"two indexes", whole + index_of(0, 0), EINVAL},
      {"offsets in front of the media", broken_offsets, EINVAL},
      {"a table longer than its box", huge_table, EINVAL},
      {"a box shorter than its header", std::string("\0\0\0\4ftyp", 8), EINVAL},
      {"empty", "", EINVAL},
      {"text", "this is not a film at all", EINVAL},
  };
  for (const auto& c : cases) {
    const TempDir dir;
    const std::string path = dir.file("film.mp4");
    write_file(path, c.content);
    EXPECT_EQ(handset::compact_mp4(path), c.result) << c.name;
    EXPECT_EQ(read_file(path), c.content) << c.name;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1) << c.name;
  }
}

}  // namespace
