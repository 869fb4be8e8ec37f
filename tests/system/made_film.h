#pragma once

#include <string>

/// Makes an H.264 film in MP4.
/// @param picture  GStreamer elements that make its pictures and end
/// @param sound    elements that make its sound and end; empty for none
/// @return empty, or what went wrong
std::string make_film(const std::string& path, const std::string& picture, const std::string& sound = {});
