#pragma once

#include <string>
#include <vector>

#include "platform/camera/control_plan.h"

namespace handset {

/// A file that records the original values of one camera's controls, from before the first change until all are
/// restored: after a crash they can be restored at the next opening. Not thread-safe.
class ControlJournal {
 public:
  /// @param folder created when needed; empty to keep nothing
  /// @param identity  the camera's, as FoundCamera has it
  ControlJournal(const std::string& folder, const std::string& identity);

  /// What to restore; empty if there is no journal, none of this camera's, or a damaged one.
  std::vector<ControlSetting> load() const;
  /// Replaces the journal atomically; removes it when there is nothing to restore. Its content is on disk when this
  /// returns. Ignores disk errors.
  void save(const std::vector<ControlSetting>& settings) const;

  const std::string& path() const { return path_; }

 private:
  const std::string folder_;
  const std::string identity_;  ///< on one line
  const std::string path_;      ///< empty: nothing is kept
};

}  // namespace handset
