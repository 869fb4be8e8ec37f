#pragma once

namespace handset {

/// Connects to PipeWire's socket as its clients do, and says nothing there. Any thread.
/// @return descriptor, owned by the caller; -1 where no server listens
int connect_to_server();

/// Returns when the other end of such a connection is gone. Reads nothing. Any thread.
void wait_for_hang_up(int fd);

}  // namespace handset
