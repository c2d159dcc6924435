// When a picture was taken.
#pragma once

#include <chrono>
#include <optional>

namespace zorvane {

/// What is known of a picture's time when it arrives, all on the host clock.
struct PipeWirePictureTimes {
    std::optional<std::chrono::nanoseconds> stamp;  ///< as its producer has written it beside the picture
    std::chrono::nanoseconds cycle{0};              ///< when the graph's cycle began; 0 if it doesn't say
    std::chrono::nanoseconds arrival{0};            ///< when we looked
};

/// The one place that says when a picture was taken.
///
/// The producer's own stamp, if there is one and it is near: the kernel's drivers write the time of the host clock at
/// which the exposure ended and the transfer began, which no later place in the chain can know. Some count from a start
/// of their own instead; their stamps are far from now and say nothing. Then the beginning of the graph's cycle, which
/// a camera that drives the graph starts with each picture. Without one of those, the arrival.
std::chrono::nanoseconds timeOfPicture(const PipeWirePictureTimes& times);

}  // namespace zorvane
