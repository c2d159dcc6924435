#include "Zorvane/Platform/Linux/PipeWire/PipeWirePictureTime.hpp"

namespace zorvane {
namespace {

/// A picture is at most this old when it arrives, though a busy camera may take long; and a driver that is ahead of the
/// clock is so by a moment only.
constexpr std::chrono::seconds oldest{2};
constexpr std::chrono::milliseconds mostAhead{50};

bool isNear(std::chrono::nanoseconds time, std::chrono::nanoseconds now) {
    return time > now - oldest && time < now + mostAhead;
}

}  // namespace

std::chrono::nanoseconds timeOfPicture(const PipeWirePictureTimes& times) {
    if (times.stamp && isNear(*times.stamp, times.arrival)) {
        return *times.stamp;
    }
    return isNear(times.cycle, times.arrival) ? times.cycle : times.arrival;
}

}  // namespace zorvane
