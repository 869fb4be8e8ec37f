#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/camera/mp4_boxes.h"

namespace handset {

/// The index of a film in fragments, gathered while they are written: the tables of an ordinary MP4 file.
///
/// Eight bytes for a sample whose duration differs from the one before, else four: some 2 MB for an hour. One thread.
class Mp4Index {
 public:
  /// Takes the `moov` box that begins a fragmented file. @return 0, or EINVAL when it is not one
  int set_head(mp4::View moov);

  /// Adds a fragment of one track.
  /// @param moof        the whole box
  /// @param position    where it stands in the file
  /// @param media_end   where the `mdat` behind it ends
  /// @return 0, or EINVAL when it makes no sense; then nothing was added
  int add_fragment(mp4::View moof, std::uint64_t position, std::uint64_t media_end);

  /// Whether a fragment with pictures was added.
  bool has_picture() const;
  /// The whole `moov` box of an ordinary file with these samples.
  mp4::Bytes moov() const;

 private:
  struct Run {
    std::uint32_t count;
    std::uint32_t value;
  };
  struct Chunk {
    std::uint64_t offset;
    std::uint32_t samples;
  };
  struct Track {
    std::uint32_t id;
    std::uint32_t timescale;
    bool picture;
    std::uint32_t default_duration;
    std::uint32_t default_flags;
    mp4::Bytes box;             ///< `trak` of the head
    std::uint64_t start = 0;    ///< time of the first sample
    std::uint64_t length = 0;   ///< of all samples
    std::uint32_t samples = 0;  ///< number of them
    std::vector<std::uint32_t> sizes;
    std::vector<Run> durations;
    std::vector<Run> shifts;               ///< from decoding to presentation
    std::vector<std::uint32_t> keyframes;  ///< numbers from 1
    std::vector<Chunk> chunks;

    std::uint64_t end() const { return start + length; }
  };
  struct Fragment;
  struct Chunklet;

  bool read_fragment(mp4::View moof, Fragment* fragment);
  static bool read_chunk(mp4::View trun, std::uint64_t position, std::uint64_t media_end, Chunklet* chunk);
  static void append_run(std::vector<Run>* runs, std::uint32_t value);
  static void continue_at(Track* track, std::uint64_t time);
  std::uint64_t movie_length(const Track& track) const;
  void write_track(const Track& track, mp4::Bytes* out) const;
  void write_media(const Track& track, mp4::View mdia, mp4::Bytes* out) const;
  void write_edits(const Track& track, mp4::View edts, mp4::Bytes* out) const;
  static void write_tables(const Track& track, mp4::View stsd, mp4::Bytes* out);

  mp4::Bytes head_;  ///< `moov`
  std::uint32_t timescale_ = 0;
  std::vector<Track> tracks_;
};

/// Turns a fragmented film into an ordinary one without copying it: appends the index, and makes one `mdat` of the old
/// head and the fragments. The film plays at every moment, also when the power fails; at the end it is on the disk.
/// @param head   where the old `moov` begins
/// @param end    where the last fragment ends; what follows is cut off
/// @return 0, or an errno value: the film is as it was then, or complete
int close_mp4(int fd, std::uint64_t head, std::uint64_t end, const Mp4Index& index);

/// Marks a film's file, whose head has been written, as one of ours: in the minor version of its type, which no player
/// looks at. complete_mp4 leaves every other film alone. @return 0 or an errno value
int mark_mp4(int fd);

/// Completes a film whose recording was cut off: its fragments get an index, and what is left of an unfinished one is
/// removed. May be repeated, and interrupted at any moment.
/// @param was_cut_off  set when there was something to complete
/// @return 0, also for a film that is complete, or an errno value. EINVAL for what is not a film of ours, ENODATA for
/// one that
///         no picture has reached: both are left untouched
int complete_mp4(const std::string& path, bool* was_cut_off);

/// Makes what was created or renamed in a folder outlast a power cut. @return 0 or an errno value
int sync_folder_of(const std::string& path);

}  // namespace handset
