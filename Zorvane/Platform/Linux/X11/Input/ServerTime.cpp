#include "Zorvane/Platform/Linux/X11/Input/ServerTime.hpp"

#include <algorithm>

namespace zorvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

/// The server may read a clock that only moves with the kernel's ticks.
constexpr milliseconds clockTick(4);
constexpr nanoseconds middleOfMillisecond(500'000);

}  // namespace

ServerTime::ServerTime(std::uint32_t serverTime, nanoseconds before, nanoseconds after)
    : server_(std::chrono::floor<milliseconds>(before)) {
    unwrap(serverTime);
    const bool isHostClock = server_ >= std::chrono::floor<milliseconds>(before) - clockTick && server_ <= after;
    if (!isHostClock) {
        toHost_ = before + (after - before) / 2 - (server_ + middleOfMillisecond);
    }
}

nanoseconds ServerTime::hostTime(std::uint32_t serverTime, nanoseconds now) {
    unwrap(serverTime);
    lastHostTime_ = std::max(lastHostTime_, std::min(now, server_ + middleOfMillisecond + toHost_));
    return lastHostTime_;
}

/// The time nearest to the last one.
void ServerTime::unwrap(std::uint32_t serverTime) {
    const auto last = static_cast<std::uint32_t>(server_.count());
    server_ += milliseconds(static_cast<std::int32_t>(serverTime - last));
}

}  // namespace zorvane
