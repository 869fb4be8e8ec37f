#include "platform/camera/node_scan.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace handset {
namespace {

/// Tells a node from another one of the same name, and from itself with other rights.
struct Stamp {
  dev_t device = 0;
  ino_t inode = 0;
  std::int64_t changed = 0;  ///< nanoseconds
  bool operator==(const Stamp&) const = default;
};

Stamp stamp_of(const std::string& node) {
  struct stat file {};
  if (stat(node.c_str(), &file) != 0) return {};
  return {file.st_rdev, file.st_ino, file.st_ctim.tv_sec * 1'000'000'000LL + file.st_ctim.tv_nsec};
}

struct Question {
  Stamp stamp;
  bool pending = false;
  V4l2Answers answers;
};

struct Scanner {
  std::mutex mutex;  ///< guards the rest
  std::condition_variable answered;
  std::map<std::string, std::shared_ptr<Question>> questions;  ///< the newest to each node
  std::function<void()> late;
  int waiting = 0;  ///< for answers
};

Scanner& scanner() {
  static Scanner* const instance = new Scanner;  // threads that hang outlive main()
  return *instance;
}

void answer(const std::shared_ptr<Question>& question) {
  V4l2Answers answers = ask_node(question->answers.place);
  Scanner& s = scanner();
  std::function<void()> late;
  {
    const std::lock_guard lock(s.mutex);
    question->answers = std::move(answers);
    question->pending = false;
    if (s.waiting == 0) late = s.late;
  }
  s.answered.notify_all();
  if (late) late();
}

/// Loopback nodes change with the programs that feed them.
bool still_holds(const Question& question, const Stamp& stamp) {
  if (question.stamp != stamp) return false;
  return question.pending || (question.answers.error == 0 && question.answers.driver != "v4l2 loopback");
}

/// Puts a question to each node that needs one. Under the scanner's lock.
std::vector<std::shared_ptr<Question>> put_questions(Scanner* s, const std::vector<std::string>& nodes) {
  std::vector<std::shared_ptr<Question>> asked;
  std::map<std::string, std::shared_ptr<Question>> newest;
  for (const std::string& node : nodes) {
    const Stamp stamp = stamp_of(node);
    std::shared_ptr<Question> question = s->questions[node];
    if (!question || !still_holds(*question, stamp)) {
      question = std::make_shared<Question>();
      question->stamp = stamp;
      question->pending = true;
      question->answers.place = find_place(node);
      std::thread(answer, question).detach();
    }
    newest[node] = question;
    asked.push_back(std::move(question));
  }
  s->questions = std::move(newest);
  return asked;
}

}  // namespace

std::vector<V4l2Answers> ask_all_nodes(std::chrono::milliseconds limit) {
  const std::vector<std::string> nodes = video_nodes();
  Scanner& s = scanner();
  std::unique_lock lock(s.mutex);
  const std::vector<std::shared_ptr<Question>> asked = put_questions(&s, nodes);
  ++s.waiting;
  s.answered.wait_for(lock, limit, [&] {
    return std::none_of(asked.begin(), asked.end(), [](const auto& question) { return question->pending; });
  });
  --s.waiting;
  std::vector<V4l2Answers> answers;
  for (const auto& question : asked) {
    answers.push_back(question->answers);
    if (question->pending) answers.back().error = ETIMEDOUT;
  }
  return answers;
}

void set_late_answer(std::function<void()> callback) {
  Scanner& s = scanner();
  const std::lock_guard lock(s.mutex);
  s.late = std::move(callback);
}

bool ask_within(std::chrono::milliseconds limit, bool otherwise, std::function<bool()> question) {
  std::packaged_task<bool()> task(std::move(question));
  std::future<bool> result = task.get_future();
  std::thread(std::move(task)).detach();
  return result.wait_for(limit) == std::future_status::ready ? result.get() : otherwise;
}

std::vector<std::string> holders_of(const std::string& node) {
  namespace fs = std::filesystem;
  std::vector<std::string> holders;
  std::error_code error;
  const std::string own = std::to_string(getpid());
  for (fs::directory_iterator process("/proc", error), end; !error && process != end; process.increment(error)) {
    const std::string number = process->path().filename().string();
    if (number.find_first_not_of("0123456789") != std::string::npos || number == own) continue;
    std::error_code hidden;
    for (fs::directory_iterator fd(process->path() / "fd", hidden), last; !hidden && fd != last; fd.increment(hidden)) {
      std::error_code gone;
      if (fs::read_symlink(fd->path(), gone) != node || gone) continue;
      std::ifstream stream(process->path() / "comm");
      std::string name;
      if (std::getline(stream, name)) holders.push_back(name);
      break;
    }
  }
  return holders;
}

bool is_media_server(const std::string& program) {
  return program == "pipewire" || program == "wireplumber";
}

}  // namespace handset
