#include "Zorvane/Platform/Foundation/RandomBytes.hpp"

#include <sys/random.h>

#include <cerrno>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {

void fillWithRandomBytes(std::span<unsigned char> bytes) {
    // So few bytes never come in part, but the wait for the seed can be interrupted.
    while (getrandom(bytes.data(), bytes.size(), 0) < 0) {
        if (errno != EINTR) {
            throw NSError::posix(errno, "read random bytes");
        }
    }
}

}  // namespace zorvane
