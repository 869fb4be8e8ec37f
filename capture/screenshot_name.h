#pragma once

#include <ctime>

/// A new screenshot's file name, such as "IMG_Nov-16-2026_04-26-29.png": the hour is that of a 12-hour clock, the
/// month's name that of the C library's locale.
/// @return newly allocated, for free(); null when there is no memory
char* make_screenshot_name(const std::tm& time);
