#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "platform/camera/camera_roll.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

/// Makes a file look an hour old.
void age(const std::string& path) {
  const timespec hour_ago{time(nullptr) - 3600, 0};
  const timespec times[] = {hour_ago, hour_ago};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

TEST(CameraRoll, FilmsOfOneSecondAreNotPartsOfOneFilm) {
  const TempDir dir;
  std::string first, second;
  int fds[2];
  ASSERT_EQ(handset::create_roll_film(dir.file("new/folder"), 256, &first, &fds[0]), 0);
  ASSERT_EQ(handset::create_roll_film(dir.file("new/folder"), 256, &second, &fds[1]), 0);
  EXPECT_NE(first, second);
  for (const int fd : fds) close(fd);
  write_file(first, "x");
  write_file(second, "x");
  const std::string stem = first.substr(0, first.size() - 4);
  for (const char* number : {"_10", "_2", "_1", "_1x", "_"}) write_file(stem + number + ".mp4", "x");
  write_file(stem + "_3.mp4", "");
  EXPECT_THAT(handset::film_parts(first), ElementsAre(first, stem + "_1.mp4", stem + "_2.mp4", stem + "_10.mp4"));
  EXPECT_THAT(handset::film_parts(second), ElementsAre(second));
  EXPECT_THAT(handset::film_parts(dir.file("none.mp4")), ElementsAre(dir.file("none.mp4")));
  EXPECT_EQ(handset::create_roll_film("/dev/null/folder", 256, &first, &fds[0]), ENOTDIR);
}

TEST(CameraRoll, OnlyWhatIsOursAndNobodysIsTidied) {
  const TempDir dir;
  const struct {
    const char* name;
    const char* content;
    bool old, held, stays, completed;
  } rows[] = {
      {"VID_20260101_000000.mp4", "cut off", true, false, true, true},
      {"VID_20260101_000000_1.mp4", "cut off", false, false, true, true},
      {"VID_20260101_000001.mp4", "whole", true, false, true, false},
      {"VID_20260101_000002-2.mp4", "cut off", true, true, true, false},  // somebody films into it
      {"VID_20260101_000003.mp4", "", true, false, false, false},
      {"VID_20260101_000004.mp4", "", false, false, true, false},  // may be about to begin
      {"VID_20260101_000005.mp4", "", true, true, true, false},
      {".VID_20260101_000000.mp4.part", "half a copy", false, false, false, false},
      {".VID_20260101_000006.mp4.part", "half a copy", true, true, true, false},
      {"holiday.mp4", "", true, false, true, false},
      {"holiday_1.mp4", "cut off", true, false, true, false},
      {".holiday.mp4.part", "cut off", true, false, true, false},
  };
  std::vector<int> holds;
  std::vector<std::string> expected;
  for (const auto& row : rows) {
    write_file(dir.file(row.name), row.content);
    if (row.old) age(dir.file(row.name));
    if (row.completed) expected.emplace_back(row.name);
    if (!row.held) continue;
    holds.push_back(open(dir.file(row.name).c_str(), O_RDWR | O_CLOEXEC));
    handset::hold_film(holds.back());
  }
  fs::create_symlink(dir.file("holiday_1.mp4"), dir.file("VID_20260101_000007.mp4"));
  fs::create_directory(dir.file("VID_20260101_000008.mp4"));
  ASSERT_EQ(mkfifo(dir.file("VID_20260101_000009.mp4").c_str(), 0600), 0);

  const auto found = handset::tidy_camera_roll(dir.path(), [](const std::string& path, bool* was_cut_off) {
    *was_cut_off = read_file(path) == "cut off";
    return 0;
  });
  EXPECT_EQ(found.completed, expected);
  EXPECT_EQ(found.removed, 2);
  for (const auto& row : rows) EXPECT_EQ(fs::exists(dir.file(row.name)), row.stays) << row.name;
  for (const int fd : holds) close(fd);
}

}  // namespace
