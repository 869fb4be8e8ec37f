#pragma once

// Asks all video nodes at once, each on a thread of its own: one whose driver hangs does not hold up the others.

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "platform/camera/v4l2_node.h"

namespace handset {

/// What the nodes in /dev answer within `limit`. A node that has not changed since it last answered is not opened
/// again; one that still owes an answer is listed with ETIMEDOUT, and is not asked a second time meanwhile. Any thread.
std::vector<V4l2Answers> ask_all_nodes(std::chrono::milliseconds limit);

/// Sets who is called when a node has answered after all, on its thread. Any thread.
void set_late_answer(std::function<void()> callback);

/// Runs a question that may never be answered: on a thread that is left behind when the limit is over.
/// @return the answer, or `otherwise`
bool ask_within(std::chrono::milliseconds limit, bool otherwise, std::function<bool()> question);

/// Programs that have a node open, this one excepted, as far as this user may see them.
std::vector<std::string> holders_of(const std::string& node);

/// PipeWire and its session manager have cameras open on behalf of other programs.
bool is_media_server(const std::string& program);

}  // namespace handset
