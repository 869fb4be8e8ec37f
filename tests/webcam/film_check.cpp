#include "tests/webcam/film_check.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>

#include "tests/support/film.h"
#include "tests/support/temp_dir.h"
#include "tests/webcam/chart.h"

namespace webcam {
namespace {

constexpr int color_tolerance = 3;
/// A session manager turns new microphones down to 40 % on a cubic scale.
constexpr double tone_peak = 0.02;

__attribute__((format(printf, 1, 2))) std::string format(const char* pattern, ...) {
  char text[300];
  std::va_list arguments;
  va_start(arguments, pattern);
  std::vsnprintf(text, sizeof text, pattern, arguments);
  va_end(arguments);
  return text;
}

bool matches(std::string text, const std::string& pattern) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return std::regex_search(text, std::regex(pattern));
}

/// The text without its line ends, as far as it fits a line.
std::string one_line(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  std::replace(text.begin(), text.end(), '\n', '|');
  return text.size() > 160 ? text.substr(0, 157) + "..." : text;
}

class Checker {
 public:
  Checker(const Row& row, const std::string& folder) : row_(row), folder_(folder) {}

  Finding check() {
    if (!std::filesystem::exists(file("status"))) {
      fault("it did not come to its end");
      return finding_;
    }
    errors_ = read_file(file("stderr"));
    output_ = read_file(file("stdout"));
    check_words();
    if (row_.look != Look::none) {
      check_film();
    } else if (std::filesystem::exists(file("film.mp4"))) {
      fault("there is a film");
    }
    const std::string& said = row_.look == Look::none && !output_.empty() ? output_ : errors_;
    if (!said.empty()) see("\"" + one_line(said) + "\"");
    return finding_;
  }

 private:
  std::string file(const std::string& name) const { return folder_ + "/" + name; }
  void fault(const std::string& text) { finding_.faults.push_back(text); }
  void see(const std::string& text) { finding_.seen += (finding_.seen.empty() ? "" : ", ") + text; }

  void check_words() {
    const int status = std::atoi(read_file(file("status")).c_str());
    if (status != row_.status) fault(format("status %d instead of %d", status, row_.status));
    if (status != 0) see(format("status %d", status));
    if (row_.says.empty() ? !errors_.empty() : !matches(errors_, row_.says)) {
      fault(row_.says.empty() ? "the error stream is not empty" : "the error stream lacks /" + row_.says + "/");
    }
    if (!matches(output_, row_.prints)) fault("the output lacks /" + row_.prints + "/: " + one_line(output_));
    if (!row_.journal.empty()) {
      const std::string journal = read_file(file("webcam.0"));
      if (!matches(journal, row_.journal)) fault("the journal lacks /" + row_.journal + "/: " + one_line(journal));
    }
    if (!std::filesystem::exists(file("milliseconds"))) return;
    const double seconds = std::atof(read_file(file("milliseconds")).c_str()) / 1000;
    if (row_.look == Look::none) see(format("%.1f s", seconds));
    if (seconds > row_.most_seconds) fault(format("it took %.1f s instead of %.1f", seconds, row_.most_seconds));
  }

  void check_film() {
    if (!std::filesystem::exists(file("film.mp4"))) return fault("there is no film");
    film::Film film = film::play(file("film.mp4"));
    if (!film.error.empty()) fault("the film " + film.error);
    if (film::count_with_ffprobe(file("film.mp4")) != static_cast<int>(film.pictures.size())) {
      fault("players differ about its pictures");
    }
    if (film.pictures.size() < 10) return fault(format("%zu pictures", film.pictures.size()));
    const film::Picture& first = film.pictures.front();
    see(format("%dx%d", first.width, first.height));
    if (first.width != row_.width || first.height != row_.height) {
      return fault(format("the film is %dx%d instead of %dx%d", first.width, first.height, row_.width, row_.height));
    }
    check_times(film);
    if (row_.look == Look::red) return check_red(film);
    check_numbers(film);
    if (row_.look == Look::chart || row_.look == Look::grey) check_colors(film);
    if (row_.sound) check_sound(&film);
  }

  void check_times(const film::Film& film) {
    const std::size_t count = film.pictures.size();
    const double length = static_cast<double>(film.pictures.back().pts - film.pictures.front().pts) / 1e9;
    const double rate = static_cast<double>(count - 1) / length;
    see(format("%zu pictures, %.2f/s", count, rate));
    if (row_.rate > 0 && std::fabs(rate - row_.rate) > row_.rate * 0.05) {
      fault(format("%.2f pictures a second instead of %g", rate, row_.rate));
    }
    double pause = 0;
    for (std::size_t i = 1; i < count; ++i) {
      pause = std::max(pause, static_cast<double>(film.pictures[i].pts - film.pictures[i - 1].pts) / 1e9);
    }
    if (row_.pause == 0) return;
    see(format("pause of %.2f s", pause));
    if (std::fabs(pause - row_.pause) > 0.5) fault(format("a pause of %.2f s instead of %g", pause, row_.pause));
  }

  /// Frames that the program says it has dropped; the viewfinder's count as well.
  int reported_drops() const {
    std::smatch match;
    return std::regex_search(output_, match, std::regex("([0-9]+) drops")) ? std::atoi(match[1].str().c_str()) : 0;
  }

  void check_numbers(const film::Film& film) {
    const int modulus = row_.look == Look::scene ? 1 << 16 : chart_numbers;
    int missing = 0;
    int unreadable = 0;
    int last = -1;
    for (const film::Picture& picture : film.pictures) {
      const int spelled = picture.strip_number();
      if (spelled < 0) {
        ++unreadable;
        continue;
      }
      if (row_.look != Look::scene && spelled >> chart_port_shift != row_.port) {
        return fault(format("this is not webcam %d: frame %d", row_.port, spelled));
      }
      const int number = spelled % modulus;
      const int step = last < 0 ? 1 : (number - last + modulus) % modulus;
      if (step == 0) return fault(format("frame %d is repeated", number));
      if (step > modulus / 2) return fault(format("frame %d comes after %d", number, last));
      missing += step - 1;
      last = number;
    }
    see(format("%d missing", missing));
    const int count = static_cast<int>(film.pictures.size());
    const int damaged = row_.broken_every > 0 ? count / (row_.broken_every - 1) + 1 : 0;
    const int drops = reported_drops();
    if (drops > 0) see(format("%d drops said", drops));
    if (missing > damaged + drops) fault(format("%d frames are missing, %d drops were said", missing, drops));
    if (unreadable > damaged) fault(format("%d pictures show no number", unreadable));
  }

  void check_red(const film::Film& film) {
    const Yuv red = to_yuv({255, 0, 0}, true);
    for (const film::Picture& picture : film.pictures) {
      const int off = distance(picture, picture.width / 2, picture.height / 2, red);
      if (off > color_tolerance) return fault(format("red is off by %d", off));
    }
  }

  static int distance(const film::Picture& picture, int x, int y, const Yuv& wanted) {
    return std::max({std::abs(picture.y(x, y) - wanted.y), std::abs(picture.u(x, y) - wanted.u),
                     std::abs(picture.v(x, y) - wanted.v)});
  }

  void check_colors(const film::Film& film) {
    int worst = 0;
    for (const std::size_t i : {std::size_t{0}, film.pictures.size() / 2, film.pictures.size() - 1}) {
      const film::Picture& picture = film.pictures[i];
      if (picture.strip_number() < 0) continue;
      for (int patch = 0; patch < static_cast<int>(chart_colors.size()); ++patch) {
        Yuv wanted = to_yuv(chart_colors[static_cast<std::size_t>(patch)], true);
        if (row_.look == Look::grey) wanted.u = wanted.v = 128;
        const Box box = chart_patch(patch, picture.width, picture.height);
        const int off = distance(picture, box.x + box.width / 2, box.y + box.height / 2, wanted);
        worst = std::max(worst, off);
        if (off > color_tolerance) fault(format("patch %d of picture %zu is off by %d", patch, i, off));
      }
    }
    see(format("colors within %d", worst));
  }

  void check_sound(film::Film* film) {
    film::play_sound(file("film.mp4"), film);
    see(format("sound of %.2f s, peak %.2f", static_cast<double>(film->sound_ns) / 1e9, film->sound_peak));
    if (film->sound_peak < tone_peak) fault("the tone is not in the film");
  }

  const Row& row_;
  const std::string folder_;
  std::string errors_;
  std::string output_;
  Finding finding_;
};

}  // namespace

Finding look_at(const Row& row, const std::string& folder) {
  return Checker(row, folder).check();
}

}  // namespace webcam
