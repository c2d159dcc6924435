#include "Zorvane/Internal/Precondition.hpp"

#include <cstdio>
#include <cstdlib>

namespace zorvane {

void preconditionFailed(const char* message) {
    std::fprintf(stderr, "zorvane: precondition failed: %s\n", message);
    std::abort();
}

}  // namespace zorvane
