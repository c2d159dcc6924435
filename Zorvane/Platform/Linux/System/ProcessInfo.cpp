#include <unistd.h>

#include "Zorvane/Platform/Foundation/NSProcessInfo.hpp"

namespace zorvane {

std::int32_t processIdentifier() {
    return ::getpid();
}

}  // namespace zorvane
