#include "platform/camera/mp4_index.h"

#include <fcntl.h>
#include <gst/gst.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platform/camera/film_file.h"
#include "tests/support/film.h"
#include "tests/support/temp_dir.h"

using handset::complete_mp4;

namespace {

constexpr int frames = 75;

std::string read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string number(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = bytes - 1; i >= 0; --i) text.push_back(static_cast<char>(value >> (8 * i)));
  return text;
}

/// A film in fragments of half a second with a long sound, as a killed recording leaves it.
std::string fragmented(const std::string& path) {
  gst_init(nullptr, nullptr);
  const std::string text =
      "videotestsrc num-buffers=75 ! video/x-raw,width=160,height=120,framerate=30/1 ! "
      "x264enc tune=zerolatency speed-preset=ultrafast key-int-max=30 ! h264parse ! mux. "
      "audiotestsrc num-buffers=118 ! audio/x-raw,rate=48000,channels=2 ! avenc_aac ! aacparse ! mux. "
      "mp4mux name=mux fragment-duration=500 streamable=true ! filesink location=" +
      path;
  const auto pipeline = handset::ElementPtr::adopt(gst_parse_launch(text.c_str(), nullptr));
  const auto bus = handset::BusPtr::adopt(gst_element_get_bus(pipeline.get()));
  gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
  const auto end = handset::MessagePtr::adopt(gst_bus_timed_pop_filtered(
      bus.get(), 60 * GST_SECOND, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
  EXPECT_TRUE(end && GST_MESSAGE_TYPE(end.get()) == GST_MESSAGE_EOS);
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
  const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  EXPECT_EQ(handset::mark_mp4(fd), 0);
  close(fd);
  return read_file(path);
}

TEST(Mp4Index, CompletesAFilmThatWasCutOffAnywhere) {
  const TempDir dir;
  const std::string path = dir.file("film.mp4");
  const std::string whole = fragmented(path);
  const film::Film original = film::play(path);
  ASSERT_EQ(original.pictures.size(), static_cast<std::size_t>(frames));
  const std::size_t first = whole.find("moof") - 4;
  std::size_t most = 0;
  for (std::size_t step = 0; step <= 24; ++step) {
    const std::size_t cut = step == 24 ? whole.size() : 20 + (whole.size() - 20) * step / 24;
    for (const std::size_t zeros : {0, 5000}) {  // that a disk put in the place of what it had not got
      write_file(path, whole.substr(0, cut) + std::string(zeros, '\0'));
      bool was_cut_off = false;
      const int error = complete_mp4(path, &was_cut_off);
      ASSERT_EQ(was_cut_off, error == 0) << cut;
      if (error != 0) {
        ASSERT_EQ(read_file(path).size(), cut + zeros) << "touched without a picture, cut at " << cut;
        ASSERT_LT(cut, first + 60'000) << error;
        continue;
      }
      ASSERT_EQ(complete_mp4(path, &was_cut_off), 0);
      ASSERT_FALSE(was_cut_off) << "a second time";
      ASSERT_EQ(film::boxes(path), (std::vector<std::string>{"ftyp", "mdat", "moov"}));
      if (zeros != 0 && step != 24) continue;
      const film::Film film = film::play(path);
      ASSERT_EQ(film.error, "") << cut;
      const int count = film::count_with_ffprobe(path);
      ASSERT_EQ(static_cast<int>(film.pictures.size()), std::max(count, 0)) << cut;
      ASSERT_GE(film.pictures.size(), most) << cut;
      most = film.pictures.size();
      for (std::size_t i = 0; i < film.pictures.size(); ++i) {
        ASSERT_EQ(film.pictures[i].luma, original.pictures[i].luma) << i << " of the film cut at " << cut;
        ASSERT_NEAR(static_cast<double>(film.pictures[i].pts - original.pictures[i].pts), 0, 1000);
      }
    }
  }
  EXPECT_EQ(most, static_cast<std::size_t>(frames));
}

TEST(Mp4Index, LeavesHostileFilesAlone) {
  const TempDir dir;
  const std::string path = dir.file("film.mp4");
  const std::string good = fragmented(path);
  const std::size_t head = good.find("moov") - 4;
  const std::size_t moof = good.find("moof") - 4;
  std::string nested;
  for (std::uint64_t left = 100'000; left > 0; --left) nested += number(left * 8, 4) + "moov";
  const auto changed = [&](const std::string& box, std::size_t offset, std::uint64_t value) {
    std::string file = good;
    return file.replace(file.find(box) + offset, 4, number(value, 4));
  };
  const std::string type = good.substr(0, head);
  const struct {
    const char* name;
    std::string content;
    int result;
  } cases[] = {
      {"empty", "", ENODATA},
      {"a head alone", good.substr(0, moof), ENODATA},
      {"text", "This is not a film, and never was.", EINVAL},
      {"another program's film in fragments", changed("ftyp", 8, 0), EINVAL},
      {"nested boxes", type + nested, EINVAL},
      {"a media box beyond the end", type + number(1, 4) + "mdat" + number(1ULL << 62, 8), ENODATA},
      {"a box smaller than its header", type + number(3, 4) + "moov", ENODATA},
      {"no time scale", changed("mvhd", 16, 0), EINVAL},
      {"a version that is not known", changed("mdhd", 4, 0x01000000), EINVAL},
      {"four thousand million samples", changed("trun", 8, 0xffffffff), ENODATA},
      {"media outside the fragment", changed("trun", 12, 0x7fffffff), ENODATA},
      {"samples of absurd size", changed("trun", 20, 0xffffffff), ENODATA},
  };
  for (const auto& c : cases) {
    write_file(path, c.content);
    bool was_cut_off = true;
    EXPECT_EQ(complete_mp4(path, &was_cut_off), c.result) << c.name;
    EXPECT_FALSE(was_cut_off) << c.name;
    EXPECT_EQ(read_file(path), c.content) << c.name;
  }
  bool was_cut_off = false;
  EXPECT_EQ(complete_mp4(dir.file("missing.mp4"), &was_cut_off), ENOENT);
  EXPECT_EQ(complete_mp4(dir.file(""), &was_cut_off), EISDIR);
}

handset::BufferPtr buffer_of(const std::string& bytes) {
  GstBuffer* buffer = gst_buffer_new_allocate(nullptr, bytes.size(), nullptr);
  gst_buffer_fill(buffer, 0, bytes.data(), bytes.size());
  return handset::BufferPtr::adopt(buffer);
}

/// Fragments of half a second: 15 pictures and 24 blocks of sound; the less film, the more the index weighs.
std::string long_fragment(bool sound, std::uint64_t time) {
  const int samples = sound ? 24 : 15;
  std::string entries;
  std::string media;
  for (int i = 0; i < samples; ++i) {
    const auto size = static_cast<std::uint64_t>(sound ? 100 : i == 0 ? 2000 : 100 + i);
    // No two neighbors last equally long: the worst for the index.
    entries += number(sound ? 1024 : 3000U + static_cast<unsigned>(i % 2), 4) + number(size, 4) +
               number(i == 0 || sound ? 0 : 0x10000, 4);
    media += std::string(size, 'x');
  }
  const auto moof_size = 88 + entries.size();
  return number(moof_size, 4) + "moof" + number(16, 4) + "mfhd" + number(0, 8) + number(moof_size - 24, 4) + "traf" +
         number(16, 4) + "tfhd" + number(0, 4) + number(sound ? 2 : 1, 4) + number(20, 4) + "tfdt" +
         number(0x01000000, 4) + number(time, 8) + number(20 + entries.size(), 4) + "trun" + number(0x701, 4) +
         number(static_cast<std::uint64_t>(samples), 4) + number(moof_size + 8, 4) + entries +
         number(8 + media.size(), 4) + "mdat" + media;
}

TEST(FilmFile, ForcesLittleMoreThanTheFilmToTheDiskAtAnyLength) {
  const TempDir dir;
  // In memory: what is forced is counted, and need not wear out a disk.
  const std::string path = "/dev/shm/" + std::filesystem::path(dir.file("")).parent_path().filename().string() + ".mp4";
  const std::string whole = fragmented(path);
  const std::size_t head = whole.find("moov") - 4;
  for (const int hours : {1, 3}) {
    handset::FilmFile file;
    ASSERT_EQ(file.open(path, std::chrono::milliseconds(0)), 0);
    ASSERT_EQ(file.append(buffer_of(whole.substr(0, head))), 0);
    ASSERT_EQ(file.append(buffer_of(whole.substr(head, whole.find("moof") - 4 - head))), 0);
    const std::uint64_t halves = static_cast<std::uint64_t>(hours) * 7200;
    for (std::uint64_t i = 0; i < halves; ++i) {
      for (const bool sound : {true, false}) {
        const std::string fragment = long_fragment(sound, i * (sound ? 24576 : 45007));
        const std::size_t media = fragment.find("mdat") - 4;
        ASSERT_EQ(file.append(buffer_of(fragment.substr(0, media))), 0);
        ASSERT_EQ(file.append(buffer_of(fragment.substr(media))), 0);
      }
    }
    const auto begun = std::chrono::steady_clock::now();
    ASSERT_EQ(file.complete(), 0);
    const double took = std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
    const auto size = static_cast<double>(std::filesystem::file_size(path));
    std::printf("%d h: film %.1f MB, index %.1f MB, forced %.1f MB, completed in %.2f s\n", hours, size / 1e6,
                (size - static_cast<double>(file.bytes())) / 1e6, static_cast<double>(file.forced()) / 1e6, took);
    EXPECT_LE(static_cast<double>(file.forced()), 1.1 * size + 65536.0 * 3600 * hours);
    EXPECT_GE(static_cast<double>(file.forced()), size) << "not all of it was forced";
    EXPECT_EQ(film::boxes(path), (std::vector<std::string>{"ftyp", "mdat", "moov"}));
  }
  std::filesystem::remove(path);
}

}  // namespace
