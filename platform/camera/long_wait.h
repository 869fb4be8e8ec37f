#pragma once

#include <functional>

namespace handset {

/// Waits, however long it takes, until done() holds; returns early if the program is about to end. A program with a
/// window keeps it drawn meanwhile. The caller must check done() afterwards.
using LongWait = std::function<void(const std::function<bool()>& done)>;

/// Sets how this thread waits for something that only the user can end, such as a question from the desktop. With an
/// empty function it sleeps. Other threads always sleep.
void set_long_wait(LongWait wait);

/// Waits in the calling thread's way. @param done called every few milliseconds, on this thread
void wait_long(const std::function<bool()>& done);

}  // namespace handset
