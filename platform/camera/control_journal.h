#pragma once

#include <string>
#include <vector>

#include "platform/camera/control_plan.h"

namespace handset {

/// A file that remembers how one camera's controls were found, from before the first is changed until all are put back:
/// after a crash they can be put back at the next opening. Not for several threads at once.
class ControlJournal {
 public:
  /// @param folder    made when it is needed; empty: nothing is kept
  /// @param identity  the camera's, as FoundCamera has it
  ControlJournal(const std::string& folder, const std::string& identity);

  /// What is to be put back; empty where there is no journal, or none of this camera's, or a damaged one.
  std::vector<ControlSetting> load() const;
  /// Replaces the journal, whole or not at all; nothing to put back removes it. What it holds has reached the disk when
  /// it returns. A disk that refuses is not reported.
  void save(const std::vector<ControlSetting>& settings) const;

  const std::string& path() const { return path_; }

 private:
  const std::string folder_;
  const std::string identity_;  ///< in one line
  const std::string path_;      ///< empty: nothing is kept
};

}  // namespace handset
