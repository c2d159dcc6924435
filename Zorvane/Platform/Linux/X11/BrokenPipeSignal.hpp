// Living through a connection's other end.
#pragma once

namespace zorvane {

/// XCB writes to its socket in the plain way; a server that ends just then must not end the process. For the thread
/// that calls.
void blockBrokenPipeSignal();

}  // namespace zorvane
