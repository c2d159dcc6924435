// The operating system's random number generator.
#pragma once

#include <span>

namespace zorvane {

/// Fills up to 256 bytes. Waits, if the system has only just started, until its generator is seeded. Throws an
/// `NSError` if there is none. Any thread.
void fillWithRandomBytes(std::span<unsigned char> bytes);

}  // namespace zorvane
