#include "platform/camera/mp4_index.h"

#include <algorithm>
#include <cerrno>
#include <limits>

namespace handset {

using mp4::append_number;
using mp4::Box;
using mp4::box_type;
using mp4::BoxWriter;
using mp4::Bytes;
using mp4::child;
using mp4::read_number;
using mp4::View;
using mp4::write_number;

namespace {

constexpr std::uint32_t no_sync_sample = 0x10000;
constexpr std::uint64_t largest_number = std::numeric_limits<std::uint32_t>::max();

std::uint32_t read_u32(View data, std::size_t offset) {
  return static_cast<std::uint32_t>(read_number(data, offset, 4));
}

void append_bytes(Bytes* out, View bytes) {
  out->insert(out->end(), bytes.begin(), bytes.end());
}

/// Copies a box of version 0 and puts a number into its content.
void append_patched(Bytes* out, View whole, std::size_t offset, std::uint64_t value) {
  const std::size_t start = out->size();
  append_bytes(out, whole);
  write_number(out, start + 8 + offset, std::min(value, largest_number), 4);
}

}  // namespace

/// What a `moof` says of its samples, with the defaults filled in.
struct Mp4Index::Fragment {
  Track* track = nullptr;
  std::uint64_t time = 0;
  std::uint32_t duration = 0;
  std::uint32_t size = 0;
  std::uint32_t flags = 0;
  View runs;  ///< all that is in the `traf`
};

/// A `trun`: the samples of one chunk.
struct Mp4Index::Chunklet {
  View entries;
  std::uint32_t has = 0;
  std::uint32_t count = 0;
  std::uint64_t media = 0;
  std::size_t entry = 0;
  std::uint32_t size = 0;  ///< of samples that have none of their own
  std::uint32_t first_flags = 0;

  /// The number that a flag announces, of a sample; `otherwise` where it was not announced.
  std::uint32_t field(std::uint32_t sample, std::uint32_t flag, std::uint32_t otherwise) const {
    if ((has & flag) == 0) return otherwise;
    std::size_t at = sample * entry;
    for (std::uint32_t before = 0x100; before < flag; before <<= 1) at += (has & before) != 0 ? 4 : 0;
    return read_u32(entries, at);
  }
};

int Mp4Index::set_head(View moov) {
  Box whole;
  View rest = moov;
  if (!mp4::next_box(&rest, &whole) || whole.type != box_type("moov")) return EINVAL;
  const View defaults = child(whole.content, box_type("mvex"));
  const View mvhd = child(whole.content, box_type("mvhd"));
  if (defaults.empty() || mvhd.size() < 100 || mvhd[0] != 0) return EINVAL;
  timescale_ = read_u32(mvhd, 12);
  tracks_.clear();
  for (View boxes = whole.content; mp4::next_box(&boxes, &whole);) {
    if (whole.type != box_type("trak")) continue;
    const View tkhd = child(whole.content, box_type("tkhd"));
    const View mdhd = child(child(whole.content, box_type("mdia")), box_type("mdhd"));
    if (tkhd.size() < 84 || tkhd[0] != 0 || mdhd.size() < 24 || mdhd[0] != 0) return EINVAL;
    Track track{};
    track.id = read_u32(tkhd, 12);
    track.timescale = read_u32(mdhd, 12);
    const View mdia = child(whole.content, box_type("mdia"));
    track.picture = !child(child(mdia, box_type("minf")), box_type("vmhd")).empty();
    track.box.assign(whole.whole.begin(), whole.whole.end());
    Box trex;
    for (View extends = defaults; mp4::next_box(&extends, &trex);) {
      if (trex.type != box_type("trex") || trex.content.size() < 24 || read_u32(trex.content, 4) != track.id) continue;
      track.default_duration = read_u32(trex.content, 12);
      track.default_flags = read_u32(trex.content, 20);
    }
    if (track.timescale == 0) return EINVAL;
    tracks_.push_back(std::move(track));
  }
  if (timescale_ == 0 || tracks_.empty()) return EINVAL;
  head_.assign(moov.begin(), moov.end());
  return 0;
}

/// @return false for what makes no sense
bool Mp4Index::read_fragment(View moof, Fragment* fragment) {
  Box whole;
  if (!mp4::next_box(&moof, &whole) || whole.type != box_type("moof")) return false;
  fragment->runs = child(whole.content, box_type("traf"));
  const View tfhd = child(fragment->runs, box_type("tfhd"));
  const View tfdt = child(fragment->runs, box_type("tfdt"));
  if (tfhd.size() < 8 || tfdt.size() < 8) return false;
  for (Track& track : tracks_) {
    if (track.id == read_u32(tfhd, 4)) fragment->track = &track;
  }
  fragment->time = tfdt[0] == 1 ? read_number(tfdt, 4, 8) : read_number(tfdt, 4, 4);
  const std::uint32_t has = read_u32(tfhd, 0);
  // Media counted from elsewhere, or a jump of half a day within a track.
  if (fragment->track == nullptr || (has & 0x1) != 0 || fragment->time > fragment->track->end() + largest_number)
    return false;
  std::size_t at = 8 + ((has & 0x2) != 0 ? 4U : 0U);
  const auto take = [&](std::uint32_t flag, std::uint32_t otherwise) {
    if ((has & flag) == 0) return otherwise;
    at += 4;
    return read_u32(tfhd, at - 4);
  };
  fragment->duration = take(0x8, fragment->track->default_duration);
  fragment->size = take(0x10, 0);
  fragment->flags = take(0x20, fragment->track->default_flags);
  return true;
}

/// @return false for what makes no sense: samples that are not in the media, or have no size
bool Mp4Index::read_chunk(View trun, std::uint64_t position, std::uint64_t media_end, Chunklet* chunk) {
  if (trun.size() < 12) return false;
  chunk->has = read_u32(trun, 0) & 0xffffff;
  chunk->count = read_u32(trun, 4);
  chunk->media = position + read_u32(trun, 8);
  const std::size_t head = (chunk->has & 0x4) != 0 ? 16 : 12;
  if ((chunk->has & 0x1) == 0 || trun.size() < head || chunk->count == 0 || chunk->media > media_end) return false;
  chunk->first_flags = read_u32(trun, 12);
  chunk->entries = trun.subspan(head);
  for (const std::uint32_t flag : {0x100U, 0x200U, 0x400U, 0x800U}) chunk->entry += (chunk->has & flag) != 0 ? 4 : 0;
  if (chunk->count > chunk->entries.size() / std::max<std::size_t>(chunk->entry, 1) && chunk->entry > 0) return false;
  const std::uint64_t room = media_end - chunk->media;
  if ((chunk->has & 0x200) == 0) return chunk->size > 0 && chunk->count <= room / chunk->size;
  std::uint64_t bytes = 0;
  for (std::uint32_t i = 0; i < chunk->count; ++i) bytes += chunk->field(i, 0x200, 0);
  return bytes <= room;
}

int Mp4Index::add_fragment(View moof, std::uint64_t position, std::uint64_t media_end) {
  Fragment fragment;
  if (!read_fragment(moof, &fragment)) return EINVAL;
  std::vector<Chunklet> chunks;
  for (Box box; mp4::next_box(&fragment.runs, &box);) {
    if (box.type != box_type("trun")) continue;
    Chunklet& chunk = chunks.emplace_back();
    chunk.size = fragment.size;
    if (!read_chunk(box.content, position, media_end, &chunk)) return EINVAL;
  }
  if (chunks.empty()) return EINVAL;
  Track& track = *fragment.track;
  continue_at(&track, fragment.time);
  for (const Chunklet& chunk : chunks) {
    track.chunks.push_back({chunk.media, chunk.count});
    for (std::uint32_t i = 0; i < chunk.count; ++i) {
      const std::uint32_t duration = chunk.field(i, 0x100, fragment.duration);
      const bool told = i == 0 && (chunk.has & 0x4) != 0;
      const std::uint32_t flags = chunk.field(i, 0x400, told ? chunk.first_flags : fragment.flags);
      track.sizes.push_back(chunk.field(i, 0x200, chunk.size));
      append_run(&track.durations, duration);
      append_run(&track.shifts, chunk.field(i, 0x800, 0));
      track.length += duration;
      ++track.samples;
      if ((flags & no_sync_sample) == 0) track.keyframes.push_back(track.samples);
    }
  }
  return 0;
}

void Mp4Index::append_run(std::vector<Run>* runs, std::uint32_t value) {
  if (!runs->empty() && runs->back().value == value) {
    ++runs->back().count;
  } else {
    runs->push_back({1, value});
  }
}

/// Lets the last sample last up to the next one's time, as the fragments say it.
void Mp4Index::continue_at(Track* track, std::uint64_t time) {
  if (track->samples == 0) {
    track->start = time;
    return;
  }
  const std::uint32_t last = track->durations.back().value;
  const std::uint64_t begins = track->end() - last;
  if (time == track->end() || time < begins) return;
  if (--track->durations.back().count == 0) track->durations.pop_back();
  const auto duration = static_cast<std::uint32_t>(std::min(time - begins, largest_number));
  append_run(&track->durations, duration);
  track->length += duration;
  track->length -= last;
}

bool Mp4Index::has_picture() const {
  return std::any_of(tracks_.begin(), tracks_.end(), [](const Track& t) { return t.picture && t.samples > 0; });
}

std::uint64_t Mp4Index::movie_length(const Track& track) const {
  return static_cast<std::uint64_t>(static_cast<double>(track.end()) * timescale_ / track.timescale + 0.5);
}

Bytes Mp4Index::moov() const {
  Bytes out(8);
  std::uint64_t longest = 0;
  for (const Track& track : tracks_) longest = std::max(longest, movie_length(track));
  View boxes = View(head_).subspan(8);
  std::size_t number = 0;
  for (Box box; mp4::next_box(&boxes, &box);) {
    if (box.type == box_type("mvhd")) {
      append_patched(&out, box.whole, 16, longest);
    } else if (box.type == box_type("trak")) {
      const Track& track = tracks_.at(number++);
      if (track.samples > 0) write_track(track, &out);
    } else if (box.type != box_type("mvex")) {
      append_bytes(&out, box.whole);
    }
  }
  write_number(&out, 0, out.size(), 4);
  write_number(&out, 4, box_type("moov"), 4);
  return out;
}

void Mp4Index::write_track(const Track& track, Bytes* out) const {
  const BoxWriter trak(out, box_type("trak"));
  View boxes = View(track.box).subspan(8);
  for (Box box; mp4::next_box(&boxes, &box);) {
    if (box.type == box_type("tkhd")) {
      append_patched(out, box.whole, 20, movie_length(track));
      write_edits(track, child(View(track.box).subspan(8), box_type("edts")), out);
    } else if (box.type == box_type("mdia")) {
      write_media(track, box.content, out);
    } else if (box.type != box_type("edts")) {
      append_bytes(out, box.whole);
    }
  }
}

/// The head's edits with the length filled in that it could not know; without any, the track begins when its first
/// sample does.
void Mp4Index::write_edits(const Track& track, View edts, Bytes* out) const {
  const View elst = child(edts, box_type("elst"));
  if (elst.size() < 20 || elst[0] != 0) {
    if (track.start == 0) return;
    const auto in_movie = [&](std::uint64_t time) {
      return static_cast<std::uint64_t>(static_cast<double>(time) * timescale_ / track.timescale + 0.5);
    };
    const BoxWriter edits(out, box_type("edts"));
    const BoxWriter list(out, box_type("elst"));
    append_number(out, 0, 4);
    append_number(out, 2, 4);
    append_number(out, in_movie(track.start), 4);
    append_number(out, largest_number, 4);  // nothing
    append_number(out, 0x10000, 4);
    append_number(out, in_movie(track.length), 4);
    append_number(out, 0, 4);
    append_number(out, 0x10000, 4);
    return;
  }
  const BoxWriter edits(out, box_type("edts"));
  const BoxWriter list(out, box_type("elst"));
  const std::size_t start = out->size();
  append_bytes(out, elst);
  const std::size_t last = elst.size() - 12;
  if (read_u32(elst, last) != 0) return;
  const double left = static_cast<double>(track.length) - static_cast<double>(read_u32(elst, last + 4));
  write_number(out, start + last, static_cast<std::uint64_t>(std::max(0.0, left) * timescale_ / track.timescale + 0.5),
               4);
}

void Mp4Index::write_media(const Track& track, View mdia, Bytes* out) const {
  const BoxWriter media(out, box_type("mdia"));
  for (Box box; mp4::next_box(&mdia, &box);) {
    if (box.type == box_type("mdhd")) {
      append_patched(out, box.whole, 16, track.length);
    } else if (box.type != box_type("minf")) {
      append_bytes(out, box.whole);
    } else {
      const BoxWriter minf(out, box_type("minf"));
      for (Box part; mp4::next_box(&box.content, &part);) {
        if (part.type != box_type("stbl")) {
          append_bytes(out, part.whole);
          continue;
        }
        write_tables(track, child(part.content, box_type("stsd")), out);
      }
    }
  }
}

void Mp4Index::write_tables(const Track& track, View stsd, Bytes* out) {
  const BoxWriter tables(out, box_type("stbl"));
  const auto begin = [out](std::uint32_t first, std::size_t count) {
    append_number(out, first, 4);
    append_number(out, count, 4);
  };
  const auto write_runs = [&](const std::vector<Run>& runs) {
    begin(0, runs.size());
    for (const Run& run : runs) {
      append_number(out, run.count, 4);
      append_number(out, run.value, 4);
    }
  };
  {
    const BoxWriter box(out, box_type("stsd"));
    append_bytes(out, stsd);
  }
  {
    const BoxWriter box(out, box_type("stts"));
    write_runs(track.durations);
  }
  if (track.shifts.size() != 1 || track.shifts.front().value != 0) {
    const BoxWriter box(out, box_type("ctts"));
    write_runs(track.shifts);
  }
  if (track.keyframes.size() != track.samples) {
    const BoxWriter box(out, box_type("stss"));
    begin(0, track.keyframes.size());
    for (const std::uint32_t number : track.keyframes) append_number(out, number, 4);
  }
  {
    const BoxWriter box(out, box_type("stsz"));
    append_number(out, 0, 4);
    begin(0, track.sizes.size());
    for (const std::uint32_t size : track.sizes) append_number(out, size, 4);
  }
  {
    const BoxWriter box(out, box_type("stsc"));
    const std::size_t count_at = out->size() + 4;
    begin(0, 0);
    std::uint32_t entries = 0;
    for (std::size_t i = 0; i < track.chunks.size(); ++i) {
      if (i > 0 && track.chunks[i].samples == track.chunks[i - 1].samples) continue;
      append_number(out, i + 1, 4);
      append_number(out, track.chunks[i].samples, 4);
      append_number(out, 1, 4);
      ++entries;
    }
    write_number(out, count_at, entries, 4);
  }
  const std::size_t width = track.chunks.back().offset > largest_number ? 8 : 4;
  const BoxWriter box(out, width == 8 ? box_type("co64") : box_type("stco"));
  begin(0, track.chunks.size());
  for (const Chunk& chunk : track.chunks) append_number(out, chunk.offset, width);
}

}  // namespace handset
