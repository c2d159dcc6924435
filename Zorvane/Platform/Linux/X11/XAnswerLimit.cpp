#include "Zorvane/Platform/Linux/X11/XAnswerLimit.hpp"

#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"

namespace zorvane {
namespace {

constexpr std::chrono::milliseconds tolerance(100);

HostClock::TimerID scheduleGivingUp(std::weak_ptr<XConnection> connection) {
    const auto clock = MonotonicClock::shared();
    return clock->schedule(clock->now() + longestXAnswer, tolerance, [connection = std::move(connection)] {
        if (const auto strong = connection.lock()) {
            strong->giveUp();
        }
    });
}

}  // namespace

XAnswerLimit::XAnswerLimit(const std::shared_ptr<XConnection>& connection) : timer_(scheduleGivingUp(connection)) {}

XAnswerLimit::~XAnswerLimit() {
    MonotonicClock::shared()->cancel(timer_);
}

}  // namespace zorvane
