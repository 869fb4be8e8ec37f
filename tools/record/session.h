#pragma once

#include "tools/record/options.h"

namespace record {

/// Records as asked, and prints the figures at the end. SIGINT, SIGTERM and SIGHUP end it early and in order;
/// they must be blocked in every thread (block_signals).
/// @return exit status
int run_session(Options options);

/// Blocks SIGINT, SIGTERM and SIGHUP in this thread and those it starts, and makes writes past a file-size limit fail
/// instead of killing the process. To be called first.
void block_signals();

}  // namespace record
