#include "Zorvane/Platform/Linux/Phone/PhoneWakeup.hpp"

#include <poll.h>
#include <sys/eventfd.h>

namespace zorvane {

PhoneWakeup::PhoneWakeup() : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void PhoneWakeup::set() const {
    eventfd_write(event_.get(), 1);
}

void PhoneWakeup::clear() const {
    eventfd_t count = 0;
    eventfd_read(event_.get(), &count);
}

bool PhoneWakeup::isSet() const {
    pollfd polled{event_.get(), POLLIN, 0};
    return poll(&polled, 1, 0) > 0;
}

}  // namespace zorvane
