#pragma once

#include <ctime>
#include <string>

#include <QImage>

#include "tools/record/options.h"

namespace record {

/// Makes every path of the options absolute, and enters the sandbox when the package's own pictures are
/// asked for. To be called before other threads run.
/// @return empty, or one line that says what is wrong
std::string prepare_paths(Options* options);

/// Loads the texture or picture that the options name, for frames of _screen_wid x _screen_hi.
/// @return empty, or one line that says what is wrong
std::string load_overlay(const Options& options);

/// The date/time stamp of a recording.
class Stamp {
 public:
  explicit Stamp(const Options& options);
  /// Draws it for the current second, when it shows another one.
  /// @return false when it cannot be drawn
  bool refresh();

 private:
  const Options& options_;
  QImage sheet_;
  std::time_t shown_ = -1;
};

}  // namespace record
