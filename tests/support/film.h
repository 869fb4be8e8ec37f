#pragma once

// What a player makes of a film.

#include <cstdint>
#include <string>
#include <vector>

namespace film {

/// One decoded picture, NV12 full-range BT.601.
struct Picture {
  std::int64_t pts;  ///< nanoseconds
  int width;
  int height;
  std::vector<std::uint8_t> luma;    ///< width * height
  std::vector<std::uint8_t> chroma;  ///< width * height / 2, U,V pairs

  std::uint8_t y(int column, int row) const;
  std::uint8_t u(int column, int row) const;
  std::uint8_t v(int column, int row) const;
  /// Number that the built-in scene's strip spells; -1 when a cell is neither black nor white.
  int strip_number() const;
};

struct Film {
  std::vector<Picture> pictures;
  std::string colorimetry;    ///< of the decoded pictures, as the stream says
  std::string orientation;    ///< that the film asks a player for, as GStreamer's tag says it; empty for upright
  std::int64_t sound_ns = 0;  ///< length of the sound
  double sound_peak = 0;      ///< largest sample, 0..1
  std::vector<float> levels;  ///< the same for each 10 ms
  std::vector<float> sound;   ///< its first channel, 48000 samples a second, from time 0 on
  std::string error;          ///< empty if the film plays to its end
};

/// Plays a film's picture with GStreamer's demuxer and decoder.
Film play(const std::string& path);
/// Plays its sound and adds what it heard.
void play_sound(const std::string& path, Film* film);

/// The same as Film::sound, as ffmpeg decodes it.
std::vector<float> sound_with_ffmpeg(const std::string& path);

/// Number of pictures that ffprobe decodes; -1 if it reports any error.
int count_with_ffprobe(const std::string& path);

/// The rotation that ffprobe reports for the pictures; empty if none.
std::string rotation_with_ffprobe(const std::string& path);

/// Top-level boxes of an MP4 file, in order.
std::vector<std::string> boxes(const std::string& path);

}  // namespace film
