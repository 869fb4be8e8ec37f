#include "capture/record_clock.h"

#include <cstdio>

std::string record_clock_text(int seconds) {
  constexpr int minute = 60;
  constexpr int hour = 3600;
  char text[100];
  const int minutes = seconds / minute % 60;
  if (seconds < hour) {
    std::snprintf(text, sizeof text, "%02d:%02d", minutes, seconds % minute);
  } else {
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", seconds / hour, minutes, seconds % minute);
  }
  return text;
}

const char* record_dot_image(int seconds) {
  return seconds % 2 != 0 ? "asset:///images/icon_reddot2.png" : "asset:///images/icon_reddot.png";
}
