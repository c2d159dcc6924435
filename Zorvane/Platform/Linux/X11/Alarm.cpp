#include "Zorvane/Platform/Linux/X11/Alarm.hpp"

#include <sys/eventfd.h>
#include <unistd.h>

namespace zorvane {

Alarm::Alarm() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

Alarm::~Alarm() {
    close(descriptor_);
}

void Alarm::ring() {
    eventfd_write(descriptor_, 1);
}

void Alarm::silence() {
    eventfd_t count = 0;
    eventfd_read(descriptor_, &count);
}

}  // namespace zorvane
