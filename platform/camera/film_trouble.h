#pragma once

#include <string>

namespace handset {

/// Why a film cannot be written, in plain words, to stand behind "Recording ended: " and the like; from an errno value.
std::string film_trouble(int error);

}  // namespace handset
