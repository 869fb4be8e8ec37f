// What becomes of a recording on a computer whose sound server is no help.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <thread>

#include "tests/support/film.h"
#include "tests/support/temp_dir.h"
#include "tests/tools/process.h"
#include "tools/record/list.h"

namespace {

/// A sound server that takes every connection and never says a word. Lets go of them at its end.
class MuteServer {
 public:
  explicit MuteServer(const std::string& path) : listener_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    EXPECT_EQ(bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(listener_, 16), 0);
    thread_ = std::thread([this] { run(); });
  }
  ~MuteServer() {
    eventfd_write(end_, 1);
    thread_.join();
    for (const int client : clients_) close(client);
    close(listener_);
    close(end_);
  }
  int connections() const { return connections_; }

 private:
  void run() {
    pollfd watched[] = {{listener_, POLLIN, 0}, {end_, POLLIN, 0}};
    while (poll(watched, 2, -1) > 0 && watched[1].revents == 0) {
      clients_.push_back(accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC));
      ++connections_;
    }
  }

  const int listener_;
  const int end_ = eventfd(0, EFD_CLOEXEC);
  std::vector<int> clients_;
  std::atomic<int> connections_{0};
  std::thread thread_;
};

class RecordSound : public testing::Test {
 protected:
  /// Runs the program on the scene. @return exit status
  int record(const std::string& server, const std::string& microphone) {
    Process process(
        {MORVANE_RECORD, "--source", "scene", "--size", "320x240", "--seconds", "1", "--microphone", microphone, path_},
        [&] { setenv("PULSE_SERVER", server.c_str(), 1); });
    const int status = process.wait();
    errors_ = process.errors();
    return status;
  }

  const TempDir dir_;
  const std::string path_ = dir_.file("film.mp4");
  const std::string socket_ = dir_.file("server");
  std::string errors_;
};

TEST_F(RecordSound, AServerThatNeverAnswersCostsTheSoundAndNoMore) {
  const MuteServer server(socket_);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(record("unix:" + socket_, "default"), 0);
  // Its own client library gives up after half a minute.
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
  EXPECT_EQ(errors_, "no sound: the microphone does not answer\n");
  EXPECT_GE(server.connections(), 1);
  film::Film film = film::play(path_);
  film::play_sound(path_, &film);
  EXPECT_EQ(film.error, "");
  EXPECT_GT(film.pictures.size(), 5U);
  EXPECT_NEAR(static_cast<double>(film.sound_ns), static_cast<double>(film.pictures.back().pts), 0.3e9);
  EXPECT_EQ(film.sound_peak, 0);
}

TEST_F(RecordSound, NoneAsksNobody) {
  const MuteServer server(socket_);
  EXPECT_EQ(record("unix:" + socket_, "none"), 0);
  EXPECT_EQ(errors_, "");
  EXPECT_EQ(server.connections(), 0);
  EXPECT_EQ(film::play(path_).error, "");
  EXPECT_EQ(read_file(path_).find("mp4a"), std::string::npos) << "a sound track";
}

TEST_F(RecordSound, AMicrophoneThatIsNotThereEndsItAtOnce) {
  EXPECT_EQ(record("unix:/nonexistent", "no such thing"), 1);
  EXPECT_EQ(errors_.find("morvane-record: no microphone is called \"no such thing\"; there "), 0U) << errors_;
  EXPECT_EQ(record("unix:/nonexistent", "gst:nosuchelement"), 1);
  EXPECT_EQ(errors_.find("morvane-record: "), 0U) << errors_;
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(RecordSound, TheListDoesNotWaitForAServerThatNeverAnswers) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const MuteServer server(socket_);
  EXPECT_EXIT(
      {
        setenv("PULSE_SERVER", ("unix:" + socket_).c_str(), 1);
        dup2(STDERR_FILENO, STDOUT_FILENO);
        std::exit(record::print_list());
      },
      testing::ExitedWithCode(0), "Microphones:\n  unknown: the sound server does not answer\n$");
}

}  // namespace
