#pragma once

// The user's lasting choices: one record of fixed size, kept byte for byte in a file. The record in memory is
// authoritative, the file is only a copy of it. Everything here is for the UI thread.

#include <bit>
#include <cstddef>
#include <cstdint>

#include "engine/texture_table.h"
#include "platform/camera/camera.h"

/// Relative to the working directory, which is the sandbox.
inline constexpr const char* prefs_path = "data/tarnel2.dat";
/// Bytes of a path, terminator included.
inline constexpr std::size_t prefs_text_size = 256;
/// Bytes of a title in the menu tables, terminator included.
inline constexpr std::size_t menu_text_size = 64;

/// Little-endian; texts end in NUL. Reserved bytes are zero in a new file and otherwise written back as they were
/// read. An index may be anything in a damaged file: read it through the functions below.
struct PrefsRecord {
  char lastVideoPath[prefs_text_size];  ///< the video being recorded, or the last one
  char overlayPath[prefs_text_size];    ///< the overlay in use
  std::uint8_t reserved0[17664];
  std::int32_t rearResolutionIndex;   ///< -1: not chosen yet
  std::int32_t frontResolutionIndex;  ///< index of the front camera's sizes
  std::int32_t spare13a;              ///< 13, never read
  std::uint8_t reserved1[4];
  std::int32_t spare13b;      ///< 13, never read
  std::int32_t logoPosition;  ///< code of logo_pos
  std::int32_t sceneIndex;    ///< row of scene_table
  std::uint8_t reserved2[4];
  std::int32_t timeFormat;    ///< index of _time_format; 0: no stamp
  std::int32_t timeColor;     ///< index of img1_path
  std::int32_t timePosition;  ///< as stamp_settings_s::position
  std::uint8_t reserved3[40];
  std::uint8_t stabilization;  ///< this and the following: 1 for yes
  std::uint8_t reserved4[2];
  std::uint8_t firstRunHintShown;
  std::uint8_t includeLogo;        ///< blend the overlay
  std::uint8_t logoOriginalColor;  ///< the overlay keeps its colours
  std::uint8_t shutterSound;       ///< sound at the start and end of a recording
  std::uint8_t installRegistered;  ///< the installation has been reported
  std::uint8_t reserved5[80];
};

static_assert(std::endian::native == std::endian::little, "the file is the record as it lies in memory");
static_assert(offsetof(PrefsRecord, lastVideoPath) == 0);
static_assert(offsetof(PrefsRecord, overlayPath) == 256);
static_assert(offsetof(PrefsRecord, reserved0) == 512);
static_assert(offsetof(PrefsRecord, rearResolutionIndex) == 18176);
static_assert(offsetof(PrefsRecord, frontResolutionIndex) == 18180);
static_assert(offsetof(PrefsRecord, spare13a) == 18184);
static_assert(offsetof(PrefsRecord, reserved1) == 18188);
static_assert(offsetof(PrefsRecord, spare13b) == 18192);
static_assert(offsetof(PrefsRecord, logoPosition) == 18196);
static_assert(offsetof(PrefsRecord, sceneIndex) == 18200);
static_assert(offsetof(PrefsRecord, reserved2) == 18204);
static_assert(offsetof(PrefsRecord, timeFormat) == 18208);
static_assert(offsetof(PrefsRecord, timeColor) == 18212);
static_assert(offsetof(PrefsRecord, timePosition) == 18216);
static_assert(offsetof(PrefsRecord, reserved3) == 18220);
static_assert(offsetof(PrefsRecord, stabilization) == 18260);
static_assert(offsetof(PrefsRecord, reserved4) == 18261);
static_assert(offsetof(PrefsRecord, firstRunHintShown) == 18263);
static_assert(offsetof(PrefsRecord, includeLogo) == 18264);
static_assert(offsetof(PrefsRecord, logoOriginalColor) == 18265);
static_assert(offsetof(PrefsRecord, shutterSound) == 18266);
static_assert(offsetof(PrefsRecord, installRegistered) == 18267);
static_assert(offsetof(PrefsRecord, reserved5) == 18268);
static_assert(sizeof(PrefsRecord) == 18348);

/// The record of a new file.
PrefsRecord default_settings();

/// Reads the record, the file's first 18348 bytes, and terminates its texts. A shorter file gives the fields that it
/// has, the defaults for the rest and a line on the error stream, and stays as it is until the next save. A file that
/// is missing or cannot be read (this with a line, unless it cannot be opened) gives the default record, which is saved
/// at once.
/// @return 1 when the record was read, 0 when it was created
int read_settings(const char* path, PrefsRecord* record);

/// Replaces the file by the record in one step: whatever interrupts this, a reader finds the old record or the new
/// one, whole. A link stays, and its target is replaced; a file in a folder that cannot be written is overwritten in
/// place. On failure the old file stays and the error stream gets a line that starts with
/// "error saving prefs: ". Waits for the disk.
void save_settings(const char* path, const PrefsRecord& record);

/// The titles of the texture menu, one per row.
void fill_texture_titles(char (&titles)[texture_row_count][menu_text_size]);

/// The stored indexes, or the default of their table where they lie outside it. The record is left as it is.
int scene_index(const PrefsRecord& record);
int logo_position(const PrefsRecord& record);
int time_format(const PrefsRecord& record);
int time_color(const PrefsRecord& record);
int time_position(const PrefsRecord& record);

/// The field that keeps a unit's resolution: the front camera has one, all others share the rear camera's.
inline std::int32_t& resolution_field(PrefsRecord& record, camera_unit_t unit) {
  return unit == CAMERA_UNIT_FRONT ? record.frontResolutionIndex : record.rearResolutionIndex;
}
