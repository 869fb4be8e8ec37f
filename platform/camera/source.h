#pragma once

#include <string>
#include <vector>

#include "platform/camera/camera.h"
#include "platform/camera/camera_config.h"
#include "platform/camera/device_finder.h"
#include "platform/camera/gst_ptr.h"
#include "platform/camera/screen_cast.h"

namespace handset {

/// What a unit films, resolved from its setting.
struct Source {
  enum class Kind { scene, clip, custom, device, x11, cast };
  Kind kind = Kind::scene;
  std::string argument;              ///< clip: absolute path; custom: bin description
  FoundCamera camera;                ///< device
  std::vector<camera_res_t> sizes;   ///< what the unit lists; a clip's own size is first
  std::shared_ptr<ScreenCast> cast;  ///< cast: the shared screen
  bool stands_in = false;            ///< a scene because no camera was found
  std::string passed_over;           ///< why another camera than the unit's own is used, for the screen; mostly empty
  CameraTrouble trouble = CameraTrouble::none;  ///< why a camera cannot be used: set where resolve_source() fails
  std::string why;                              ///< the same in one sentence, for the screen

  /// In how many ways its device can be reached, the best one first.
  int ways() const { return kind == Kind::device && camera.direct && camera.device ? 2 : 1; }
  /// What no other capture of this process may hold at the same time; empty: nothing.
  const std::string& device_name() const { return camera.identity; }

  bool is_clip() const { return kind == Kind::clip; }
  /// Shown whole: what lies at the edges of a screen matters as much as its middle.
  bool is_screen() const { return kind == Kind::x11 || kind == Kind::cast; }
  /// Says itself when it fails, and may show the same picture for long.
  bool may_stand_still() const { return is_clip() || kind == Kind::cast; }
  /// May deliver faster than its timestamps say, and may therefore run unpaced.
  bool is_file_paced() const { return kind == Kind::clip || kind == Kind::custom; }
};

/// Sizes that the pipeline can bring any source to: even, 16..8192 by 16..4320.
bool possible_size(unsigned width, unsigned height);

/// Makes a source the built-in scene.
void use_scene(Source* source);

/// Finds what is behind a unit. After a failure one line on the error stream says why.
/// @return 0, EINVAL (text, or several cameras of that name), ENOENT (clip missing), EIO (clip undecodable), ENODEV (no
///         screen to film, no camera of that name); for a camera that cannot be used what error_of() says of its
///         trouble: EACCES, EBUSY, EIO, ENOTSUP
int resolve_source(const CameraServiceConfig& config, camera_unit_t unit, Source* source);

/// Builds the head of the capture pipeline: an element with one raw-video source pad that delivers
/// upright pictures, of the asked size where the source can choose.
/// @param error  receives the reason when the result is empty
/// @param way  which of Source::ways()
ElementPtr make_source_element(const Source& source, int way, camera_res_t size, int frame_rate, std::string* error);

}  // namespace handset
