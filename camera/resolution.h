#pragma once

// Chooses one of a camera's sizes. Lists are in the camera's own order.

#include <optional>
#include <span>
#include <string>

#include "platform/camera/camera.h"

/// The entry nearest to 1280 x 720, or to 720 x 1280 for a portrait one. An entry replaces the best so far only if it
/// is nearer on both sides; the initial best is entry 3, or entry 0 of a list with fewer than four.
/// @return index, 0 for an empty list
int preferred_resolution(std::span<const camera_res_t> list);

/// The entry that a unit is opened with: the stored one of a lens camera, raised to 0 if negative; the preferred one
/// for the desktop, for a rear camera whose choice is still -1 and for an index beyond the list.
/// @return index, or nothing for an empty list: then there is nothing to store either
std::optional<int> choose_resolution(camera_unit_t unit, int stored, std::span<const camera_res_t> list);

/// "%d x %d"
std::string resolution_text(const camera_res_t& size);

/// Text of the size label for a stored index: its entry, or the preferred one if the list has no such entry (the
/// desktop is labeled by the rear camera's index); empty for an empty list.
std::string resolution_label(int stored, std::span<const camera_res_t> list);
