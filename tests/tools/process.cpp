#include "tests/tools/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

Process::Process(const std::vector<std::string>& words, const std::function<void()>& prepare) {
  int out[2];
  int err[2];
  if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) return;
  pid_ = fork();
  if (pid_ == 0) {
    dup2(out[1], STDOUT_FILENO);
    dup2(err[1], STDERR_FILENO);
    if (prepare) prepare();
    std::vector<char*> argv;
    for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    execvp(argv[0], argv.data());
    _exit(127);
  }
  close(out[1]);
  close(err[1]);
  out_ = out[0];
  err_ = err[0];
}

Process::~Process() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  if (out_ >= 0) close(out_);
  if (err_ >= 0) close(err_);
}

void Process::signal(int number) const {
  kill(pid_, number);
}

int Process::wait() {
  pollfd ends[] = {{out_, POLLIN, 0}, {err_, POLLIN, 0}};
  std::string* texts[] = {&output_, &errors_};
  for (int open = 2; open > 0 && poll(ends, 2, -1) > 0;) {
    for (int i = 0; i < 2; ++i) {
      if (ends[i].revents == 0) continue;
      char block[4096];
      const ssize_t got = read(ends[i].fd, block, sizeof block);
      if (got > 0) {
        texts[i]->append(block, static_cast<std::size_t>(got));
      } else {
        ends[i].fd = -1;
        --open;
      }
    }
  }
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}
