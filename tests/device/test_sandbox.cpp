#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platform/device/sandbox.h"
#include "tests/support/temp_dir.h"

namespace fs = std::filesystem;

namespace {

UserDirs dirs_in(const TempDir& home) {
  return {.config = home.file("config"),
          .data = home.file("data"),
          .cache = home.file("cache"),
          .state = home.file("state"),
          .pictures = home.file("Pictures"),
          .videos = home.file("Videos")};
}

TEST(Sandbox, MakesItsFoldersAndRepairsItsLinks) {
  const TempDir home;
  const UserDirs dirs = dirs_in(home);
  std::string root;
  ASSERT_EQ(prepare_sandbox(dirs, "/first/package", &root), 0);
  EXPECT_EQ(root, home.file("data/morvane"));
  EXPECT_TRUE(fs::is_directory(root + "/data"));
  EXPECT_EQ(fs::read_symlink(root + "/app"), "/first/package");
  EXPECT_EQ(fs::canonical(root + "/shared/camera"), fs::canonical(home.file("Pictures/Camera")));

  // Installed elsewhere since, and somebody put a real folder where the pictures' link was.
  fs::remove(root + "/shared/camera");
  fs::create_directory(root + "/shared/camera");
  ASSERT_EQ(prepare_sandbox(dirs, "/second/package", &root), 0);
  EXPECT_EQ(fs::read_symlink(root + "/app"), "/second/package");
  EXPECT_FALSE(fs::is_symlink(root + "/shared/camera"));
}

TEST(Sandbox, SaysWhatItCannotCreate) {
  const TempDir home;
  write_file(home.file("data"), "a file where the folder should be");
  std::string root;
  testing::internal::CaptureStderr();
  EXPECT_NE(prepare_sandbox(dirs_in(home), "/package", &root), 0);
  const std::string line = testing::internal::GetCapturedStderr();
  EXPECT_EQ(line.find("cannot create " + home.file("data/morvane")), 0U) << line;
}

/// What enter_sandbox leaves, seen in a process of its own: it changes the environment for good.
int enter_in_child(const TempDir& home) {
  for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "XAUTHORITY"})
    unsetenv(name);
  setenv("HOME", home.path().c_str(), 1);
  setenv("ICEAUTHORITY", "/elsewhere", 1);
  for (const char* name : {".Xauthority", ".ICEauthority"}) std::ofstream(home.file(name)) << "key";
  if (enter_sandbox("/package") != 0) return 1;
  const std::string root = home.file(".local/share/morvane");
  if (fs::current_path() != fs::canonical(root)) return 2;
  if (std::string(getenv("HOME")) != root + "/data") return 3;
  if (std::string(getenv("XDG_CONFIG_HOME")) != home.file(".config")) return 4;
  if (std::string(getenv("XDG_DATA_HOME")) != home.file(".local/share")) return 5;
  if (camera_roll_dir() != home.file("Videos/Camera")) return 6;
  const char* authority = getenv("XAUTHORITY");
  if (authority == nullptr || authority != home.file(".Xauthority")) return 7;
  if (std::string(getenv("ICEAUTHORITY")) != "/elsewhere") return 8;
  return 0;
}

TEST(Sandbox, EnteringMovesHomeButNotTheUsersFolders) {
  const TempDir home;
  const pid_t child = fork();
  if (child == 0) _exit(enter_in_child(home));
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
