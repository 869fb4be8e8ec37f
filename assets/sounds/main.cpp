// Makes the system sounds: render_sounds PACKAGE writes WAV files, 16 bits mono, into PACKAGE/native/assets/sounds.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <string>
#include <vector>

namespace {

constexpr int sample_rate = 48000;
constexpr double peak = 0.4;

struct Tone {
  double start;      ///< seconds
  double frequency;  ///< Hz
  double seconds;
};

/// A soft bell: the fundamental and a little of its octave, with a short attack so that it does not click, and
/// dying away to silence at its end.
double bell(const Tone& tone, double at) {
  constexpr double attack = 0.006;
  const double left = 1 - at / tone.seconds;
  const double envelope = std::min(1.0, at / attack) * left * left;
  const double phase = 2 * std::numbers::pi * tone.frequency * at;
  return envelope * (0.85 * std::sin(phase) + 0.15 * std::sin(2 * phase));
}

std::vector<std::int16_t> render(const std::vector<Tone>& tones) {
  double length = 0;
  for (const Tone& tone : tones) length = std::max(length, tone.start + tone.seconds);
  std::vector<std::int16_t> samples(static_cast<std::size_t>(length * sample_rate));
  for (std::size_t i = 0; i < samples.size(); ++i) {
    double value = 0;
    for (const Tone& tone : tones) {
      const double at = static_cast<double>(i) / sample_rate - tone.start;
      if (at >= 0 && at < tone.seconds) value += bell(tone, at);
    }
    samples[i] = static_cast<std::int16_t>(std::lround(std::clamp(peak * value, -1.0, 1.0) * 32767));
  }
  return samples;
}

void append(std::string* bytes, std::uint32_t value, int size) {
  for (int i = 0; i < size; ++i) bytes->push_back(static_cast<char>(value >> (8 * i) & 0xff));
}

/// A RIFF file: the format chunk of 16 bytes and the samples, everything little endian.
std::string wav_file(const std::vector<std::int16_t>& samples) {
  const auto size = static_cast<std::uint32_t>(samples.size() * 2);
  std::string bytes = "RIFF";
  append(&bytes, 36 + size, 4);
  bytes += "WAVEfmt ";
  append(&bytes, 16, 4);
  append(&bytes, 1, 2);  // PCM
  append(&bytes, 1, 2);  // channels
  append(&bytes, sample_rate, 4);
  append(&bytes, sample_rate * 2, 4);  // bytes per second
  append(&bytes, 2, 2);                // bytes per sample of all channels
  append(&bytes, 16, 2);               // bits
  bytes += "data";
  append(&bytes, size, 4);
  for (const std::int16_t sample : samples) append(&bytes, static_cast<std::uint16_t>(sample), 2);
  return bytes;
}

bool write(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary);
  file << bytes;
  file.close();
  if (!file) std::fprintf(stderr, "cannot write %s\n", path.c_str());
  return static_cast<bool>(file);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: render_sounds PACKAGE\n", stderr);
    return 2;
  }
  const std::filesystem::path folder = std::filesystem::path(argv[1]) / "native/assets/sounds";
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  // Up for what begins, down for what ends: E5 and A5.
  const std::vector<Tone> start = {{0.0, 659.26, 0.15}, {0.09, 880.0, 0.17}};
  const std::vector<Tone> stop = {{0.0, 880.0, 0.15}, {0.09, 659.26, 0.17}};
  const bool written = write(folder / "event_recording_start.wav", wav_file(render(start))) &&
                       write(folder / "event_recording_stop.wav", wav_file(render(stop)));
  return written ? 0 : 1;
}
