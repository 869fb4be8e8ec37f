// A programmable USB webcam for a machine whose kernel has a virtual host controller (vhci_hcd).

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>

#include "tests/webcam/webcam.h"

namespace {

using webcam::Control;
using webcam::Mode;
using webcam::Setting;

constexpr const char* usage = R"(Usage: usb_webcam --commands FIFO --journal FILE --mode MODE... [OPTION]...
  --mode FORMAT:WxH@RATE[,RATE]...  YUYV, NV12, GREY, MJPEG, H264 or Z16 (depth); in the order in which the camera lists them
  --port N           of the virtual host controller, 0 to 3 (0)
  --name TEXT        product (Test Webcam)
  --serial TEXT      serial number; without it the camera has none
  --controls LIST    names, separated by commas: exposure_mode, exposure, zoom, gain ...
  --do COMMAND       carried out before the camera is plugged in
  --at FRAME COMMAND carried out before a stream's frame of this number
Reads commands from the FIFO, a line each, until `quit` or SIGTERM.
)";

bool parse_mode(const std::string& text, Mode* mode) {
  std::istringstream in(text);
  std::string format;
  char x = 0;
  char at = 0;
  if (!std::getline(in, format, ':') || !webcam::parse_format(format, &mode->format)) return false;
  if (!(in >> mode->width >> x >> mode->height >> at) || x != 'x' || at != '@') return false;
  for (double rate = 0; in >> rate; in.ignore()) {
    if (rate <= 0) return false;
    mode->rates.push_back(rate);
  }
  return !mode->rates.empty();
}

bool parse_controls(const std::string& text, std::vector<Control>* controls) {
  std::istringstream in(text);
  for (std::string name; std::getline(in, name, ',');) {
    const std::size_t before = controls->size();
    for (const Control& control : webcam::known_controls()) {
      if (name == control.name) controls->push_back(control);
    }
    if (controls->size() == before) return false;
  }
  return true;
}

struct Options {
  Setting setting;
  std::vector<std::string> first_commands;
  std::string fifo;
  std::string journal;
};

bool parse(int argc, char** argv, Options* options) {
  int i = 1;
  const auto next = [&]() -> std::string { return ++i < argc ? argv[i] : ""; };
  for (; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--mode") {
      Mode mode{};
      if (!parse_mode(next(), &mode)) return false;
      options->setting.modes.push_back(mode);
    } else if (word == "--controls") {
      if (!parse_controls(next(), &options->setting.controls)) return false;
    } else if (word == "--port") {
      options->setting.port = std::atoi(next().c_str());
    } else if (word == "--name") {
      options->setting.identity.name = next();
    } else if (word == "--serial") {
      options->setting.identity.serial = next();
    } else if (word == "--do") {
      options->first_commands.push_back(next());
    } else if (word == "--at") {
      const int frame = std::atoi(next().c_str());
      options->setting.plan.emplace_back(frame, next());
    } else if (word == "--commands") {
      options->fifo = next();
    } else if (word == "--journal") {
      options->journal = next();
    } else {
      return false;
    }
  }
  return !options->setting.modes.empty() && !options->fifo.empty() && !options->journal.empty() &&
         options->setting.port >= 0 && options->setting.port < 4;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!parse(argc, argv, &options)) {
    std::fputs(usage, stderr);
    return 2;
  }
  std::FILE* journal = std::fopen(options.journal.c_str(), "we");
  if (journal == nullptr || (mkfifo(options.fifo.c_str(), 0600) != 0 && errno != EEXIST)) {
    std::perror("usb_webcam");
    return 1;
  }
  // Open for writing as well: commands come one by one, and the end of one writer is not the end.
  const int fifo = open(options.fifo.c_str(), O_RDWR | O_CLOEXEC);
  std::FILE* commands = fifo >= 0 ? fdopen(fifo, "r") : nullptr;
  if (commands == nullptr) {
    std::perror("usb_webcam");
    return 1;
  }
  // SIGTERM ends the reading below, and with it everything in order: the webcam's threads must not get it instead.
  struct sigaction ends {};
  ends.sa_handler = [](int) {};
  sigaction(SIGTERM, &ends, nullptr);
  sigset_t term;
  sigemptyset(&term);
  sigaddset(&term, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &term, nullptr);
  webcam::Webcam camera(options.setting, journal);
  for (const std::string& command : options.first_commands) {
    if (!camera.obey(command)) return 1;
  }
  if (!camera.obey("plug")) return 1;
  pthread_sigmask(SIG_UNBLOCK, &term, nullptr);
  char line[200];
  while (std::fgets(line, sizeof line, commands) != nullptr) {
    line[std::strcspn(line, "\n")] = '\0';
    if (std::strcmp(line, "quit") == 0) return 0;
    if (!camera.obey(line)) std::fprintf(stderr, "usb_webcam: %s: not done\n", line);
  }
  return 0;
}
