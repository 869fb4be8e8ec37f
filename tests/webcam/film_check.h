#pragma once

// What came of a row, and what is wrong with it.

#include <string>
#include <vector>

#include "tests/webcam/rows.h"

namespace webcam {

struct Finding {
  std::string seen;                 ///< in a few words
  std::vector<std::string> faults;  ///< empty: as the row wants it
};

/// Looks at what row.sh left. @param folder  of this row
Finding look_at(const Row& row, const std::string& folder);

}  // namespace webcam
