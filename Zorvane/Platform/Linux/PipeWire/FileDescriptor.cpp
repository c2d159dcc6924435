#include "Zorvane/Platform/Linux/PipeWire/FileDescriptor.hpp"

#include <unistd.h>

namespace zorvane {

FileDescriptor::~FileDescriptor() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

}  // namespace zorvane
