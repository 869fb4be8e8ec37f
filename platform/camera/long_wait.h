#pragma once

#include <functional>

namespace handset {

/// Waits until done() holds, as long as that takes; returns early when the program is about to end. A program with a
/// window keeps it drawn meanwhile. Whoever waits must look afterwards whether done() holds.
using LongWait = std::function<void(const std::function<bool()>& done)>;

/// How this thread waits for something that only the user can bring to an end, such as a question of the desktop. An
/// empty function: it sleeps. Other threads always sleep.
void set_long_wait(LongWait wait);

/// Waits in the calling thread's manner. @param done  called every few milliseconds, on this thread
void wait_long(const std::function<bool()>& done);

}  // namespace handset
