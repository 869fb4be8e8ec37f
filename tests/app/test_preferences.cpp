#include "app/preferences.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <utility>

#include "tests/support/temp_dir.h"

namespace {

constexpr std::size_t file_size = 18348;
constexpr uid_t nobody = 65534;

void put(std::string* image, std::size_t offset, std::int32_t value) {
  for (std::size_t i = 0; i < 4; ++i) {
    (*image)[offset + i] = static_cast<char>(static_cast<std::uint32_t>(value) >> (8 * i) & 0xFF);
  }
}

std::string default_image() {
  std::string image(file_size, '\0');
  put(&image, 18176, -1);
  put(&image, 18184, 13);
  put(&image, 18192, 13);
  put(&image, 18200, 4);
  image[18264] = image[18265] = image[18266] = 1;
  return image;
}

/// Every byte has a value of its own position's, the reserved ones too; the texts fill their fields.
std::string full_image() {
  std::string image(file_size, '\0');
  for (std::size_t i = 0; i < file_size; ++i) image[i] = static_cast<char>(1 + i % 251);
  image[255] = image[511] = '\0';
  return image;
}

std::string as_bytes(const PrefsRecord& record) {
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

PrefsRecord as_record(const std::string& image) {
  PrefsRecord record;
  std::memcpy(&record, image.data(), sizeof record);
  return record;
}

std::string errors_of(const std::function<void()>& action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

/// The privileges of a user who owns nothing, for whom permissions count.
class AsNobody {
 public:
  AsNobody() { EXPECT_TRUE(geteuid() != 0 || seteuid(nobody) == 0); }
  ~AsNobody() { EXPECT_TRUE(getuid() != 0 || seteuid(0) == 0); }
};

class Preferences : public testing::Test {
 protected:
  Preferences() { std::filesystem::create_directory(dir.file("data")); }
  ~Preferences() override { chmod(dir.file("data").c_str(), 0700); }

  void allow_only(mode_t folder, mode_t file) const {
    chmod(dir.path().c_str(), 0755);
    chmod(path.c_str(), file);
    chmod(dir.file("data").c_str(), folder);
  }
  std::size_t files() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(dir.file("data")), {}));
  }

  const TempDir dir;
  const std::string path = dir.file("data/tarnel2.dat");
  PrefsRecord record;
};

TEST_F(Preferences, ANewFileHoldsTheDefaults) {
  EXPECT_EQ(errors_of([&] { EXPECT_EQ(read_settings(path.c_str(), &record), 0); }), "");
  EXPECT_EQ(as_bytes(record), default_image());
  EXPECT_EQ(read_file(path), default_image());
  EXPECT_EQ(read_settings(path.c_str(), &record), 1);
  EXPECT_EQ(files(), 1U);
}

TEST_F(Preferences, EveryFieldStandsAtItsPlace) {
  std::string image = full_image();
  const std::pair<std::size_t, std::int32_t PrefsRecord::*> numbers[] = {{18176, &PrefsRecord::rearResolutionIndex},
                                                                         {18180, &PrefsRecord::frontResolutionIndex},
                                                                         {18184, &PrefsRecord::spare13a},
                                                                         {18192, &PrefsRecord::spare13b},
                                                                         {18196, &PrefsRecord::logoPosition},
                                                                         {18200, &PrefsRecord::sceneIndex},
                                                                         {18208, &PrefsRecord::timeFormat},
                                                                         {18212, &PrefsRecord::timeColor},
                                                                         {18216, &PrefsRecord::timePosition}};
  const std::pair<std::size_t, std::uint8_t PrefsRecord::*> flags[] = {
      {18260, &PrefsRecord::stabilization}, {18263, &PrefsRecord::firstRunHintShown},
      {18264, &PrefsRecord::includeLogo},   {18265, &PrefsRecord::logoOriginalColor},
      {18266, &PrefsRecord::shutterSound},  {18267, &PrefsRecord::installRegistered}};
  for (const auto& [offset, field] : numbers) put(&image, offset, -2 - static_cast<std::int32_t>(offset));
  write_file(path, image);
  ASSERT_EQ(read_settings(path.c_str(), &record), 1);
  for (const auto& [offset, field] : numbers) EXPECT_EQ(record.*field, -2 - static_cast<std::int32_t>(offset));
  for (const auto& [offset, field] : flags) EXPECT_EQ(record.*field, 1 + offset % 251) << offset;
  EXPECT_EQ(std::string(record.lastVideoPath), image.substr(0, 255));
  EXPECT_EQ(std::string(record.overlayPath), image.substr(256, 255));

  // Changed fields, reserved bytes as they were.
  record.overlayPath[0] = '\0';
  record.timeFormat = 0x01020304;
  record.shutterSound = 0;
  image[256] = '\0';
  put(&image, 18208, 0x01020304);
  image[18266] = 0;
  save_settings(path.c_str(), record);
  EXPECT_EQ(read_file(path), image);
}

TEST_F(Preferences, AShortFileKeepsWhatItHas) {
  for (const std::size_t length : {std::size_t{0}, std::size_t{255}, std::size_t{256}, file_size - 1}) {
    const std::string file = full_image().substr(0, length);
    write_file(path, file);
    const std::string line = errors_of([&] { EXPECT_EQ(read_settings(path.c_str(), &record), 1); });
    EXPECT_EQ(line, path + " is shorter than 18348 bytes, the defaults are used for the rest\n");
    const std::size_t kept = length < 256 ? 0 : length & ~std::size_t{3};
    EXPECT_EQ(as_bytes(record), file.substr(0, kept) + default_image().substr(kept));
    EXPECT_EQ(read_file(path), file);
  }
}

TEST_F(Preferences, ALinkStaysALink) {
  const std::string target = dir.file("elsewhere.dat");
  write_file(target, full_image());
  std::filesystem::create_symlink(target, path);
  save_settings(path.c_str(), as_record(default_image()));
  EXPECT_TRUE(std::filesystem::is_symlink(path));
  EXPECT_EQ(read_file(target), default_image());
}

TEST_F(Preferences, ALongFileGivesItsBeginningAndTextsAreTerminated) {
  const std::string image = std::string(512, 'x') + full_image().substr(512) + "and more";
  write_file(path, image);
  EXPECT_EQ(errors_of([&] { EXPECT_EQ(read_settings(path.c_str(), &record), 1); }), "");
  EXPECT_EQ(std::string(record.lastVideoPath), std::string(255, 'x'));
  EXPECT_EQ(std::string(record.overlayPath), std::string(255, 'x'));
  EXPECT_EQ(as_bytes(record).substr(512), image.substr(512, file_size - 512));
  EXPECT_EQ(read_file(path), image);
  save_settings(path.c_str(), record);
  EXPECT_EQ(read_file(path).size(), file_size);
}

TEST_F(Preferences, WhatIsNotAFileGivesTheDefaults) {
  std::filesystem::create_directory(path);
  const std::string lines = errors_of([&] { EXPECT_EQ(read_settings(path.c_str(), &record), 0); });
  EXPECT_EQ(lines, "cannot read " + path + ": Is a directory\nerror saving prefs: : Is a directory\n");
  EXPECT_EQ(as_bytes(record), default_image());
  EXPECT_EQ(files(), 1U);
}

TEST_F(Preferences, AFolderThatCannotBeWrittenMayHoldAFileThatCan) {
  for (const bool open : {false, true}) {
    write_file(path, full_image());
    allow_only(0555, open ? 0666 : 0444);
    {
      const AsNobody user;
      ASSERT_EQ(read_settings(path.c_str(), &record), 1);
      record.timeFormat = 3;
      for (int save = 0; save < 2; ++save) {
        EXPECT_EQ(errors_of([&] { save_settings(path.c_str(), record); }),
                  open ? "" : "error saving prefs: : Permission denied\n");
      }
    }
    EXPECT_EQ(record.timeFormat, 3);
    EXPECT_EQ(read_file(path), open ? as_bytes(record) : full_image());
    EXPECT_EQ(files(), 1U);
    allow_only(0700, 0600);
  }
}

TEST_F(Preferences, AProtectedFileStaysAndAMissingFolderIsReported) {
  write_file(path, full_image());
  allow_only(0777, 0000);
  {
    const AsNobody user;
    const std::string line = errors_of([&] { EXPECT_EQ(read_settings(path.c_str(), &record), 0); });
    EXPECT_EQ(line, "error saving prefs: : Permission denied\n");
    EXPECT_EQ(as_bytes(record), default_image());
  }
  allow_only(0700, 0600);
  EXPECT_EQ(read_file(path), full_image());

  const std::string nowhere = dir.file("no/tarnel2.dat");
  const std::string line = errors_of([&] { EXPECT_EQ(read_settings(nowhere.c_str(), &record), 0); });
  EXPECT_EQ(line, "error saving prefs: : No such file or directory\n");
  EXPECT_EQ(as_bytes(record), default_image());
}

TEST_F(Preferences, WhatAnInterruptedSaveLeftDoesNotMatter) {
  write_file(path, full_image());
  write_file(path + ".new", "half a rec");
  EXPECT_EQ(errors_of([&] { EXPECT_EQ(read_settings(path.c_str(), &record), 1); }), "");
  EXPECT_EQ(as_bytes(record), full_image());
  save_settings(path.c_str(), as_record(default_image()));
  EXPECT_EQ(read_file(path), default_image());
  EXPECT_EQ(files(), 1U);
}

TEST_F(Preferences, AFullDiskKeepsTheOldRecord) {
  write_file(path, full_image());
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  const auto old_handler = signal(SIGXFSZ, SIG_IGN);
  // Full early, and full when all but the record's end has been written.
  for (const rlim_t room : {rlim_t{5000}, rlim_t{file_size - 1}}) {
    const rlimit small{.rlim_cur = room, .rlim_max = limit.rlim_max};
    const std::string line = errors_of([&] {
      setrlimit(RLIMIT_FSIZE, &small);
      save_settings(path.c_str(), as_record(default_image()));
      setrlimit(RLIMIT_FSIZE, &limit);
    });
    EXPECT_EQ(line, "error saving prefs: : File too large\n");
    EXPECT_EQ(read_file(path), full_image());
    EXPECT_EQ(files(), 1U);
  }
  signal(SIGXFSZ, old_handler);
}

TEST_F(Preferences, AKilledSaveLeavesOneOfBothRecordsWhole) {
  const PrefsRecord records[] = {as_record(default_image()), as_record(full_image())};
  save_settings(path.c_str(), records[0]);
  for (useconds_t round = 0; round < 20; ++round) {
    const pid_t child = fork();
    if (child == 0) {
      for (int i = 0;; i ^= 1) save_settings(path.c_str(), records[i]);
    }
    usleep(1000 + 137 * round);
    kill(child, SIGKILL);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    const std::string image = read_file(path);
    ASSERT_TRUE(image == default_image() || image == full_image()) << image.size() << " bytes, round " << round;
  }
}

TEST(PreferencesIndexes, OutsideTheirTablesAreTheDefaults) {
  struct Field {
    std::int32_t PrefsRecord::*field;
    int (*index)(const PrefsRecord&);
    int count;
    int fallback;
  };
  const Field fields[] = {{&PrefsRecord::sceneIndex, scene_index, 5, 4},
                          {&PrefsRecord::logoPosition, logo_position, 7, 0},
                          {&PrefsRecord::timeFormat, time_format, 9, 0},
                          {&PrefsRecord::timeColor, time_color, 6, 0},
                          {&PrefsRecord::timePosition, time_position, 5, 4}};
  for (const Field& field : fields) {
    PrefsRecord record = default_settings();
    for (const int inside : {0, 1, field.count - 1}) {
      record.*field.field = inside;
      EXPECT_EQ(field.index(record), inside);
    }
    for (const int outside : {-1, field.count, INT_MIN, INT_MAX}) {
      record.*field.field = outside;
      EXPECT_EQ(field.index(record), field.fallback) << outside;
      EXPECT_EQ(record.*field.field, outside);
    }
  }
}

TEST(PreferencesIndexes, OnlyTheFrontCameraHasAResolutionOfItsOwn) {
  PrefsRecord record = default_settings();
  resolution_field(record, CAMERA_UNIT_FRONT) = 7;
  resolution_field(record, CAMERA_UNIT_DESKTOP) = 5;
  EXPECT_EQ(record.frontResolutionIndex, 7);
  EXPECT_EQ(resolution_field(record, CAMERA_UNIT_REAR), 5);
}

TEST(TextureTitles, FillTheirRows) {
  char titles[texture_row_count][menu_text_size];
  std::memset(titles, 'x', sizeof titles);
  fill_texture_titles(titles);
  EXPECT_STREQ(titles[0], "Vintage");
  EXPECT_STREQ(titles[11], "Brick");
  EXPECT_STREQ(titles[12], "No Texture");
}

}  // namespace
