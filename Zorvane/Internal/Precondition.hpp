// The end of the process on a mistake in the library's own code that nothing could go on from.
#pragma once

namespace zorvane {

[[noreturn]] void preconditionFailed(const char* message);

/// Ends the process with `message` unless `holds`. For mistakes of this library's code only: what a host passes in, or
/// a device does, is an error to throw.
inline void precondition(bool holds, const char* message) {
    if (!holds) {
        preconditionFailed(message);
    }
}

}  // namespace zorvane
