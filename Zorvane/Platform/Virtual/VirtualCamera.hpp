// What a virtual camera sees, and everything that can be wrong with it.
#pragma once

#include <chrono>
#include <cstdint>

#include "Zorvane/Platform/CoreMedia/CMFormatDescription.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"
#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"

namespace zorvane {

/// The room in front of a camera is a pure function of time: a clock that shows milliseconds, readable with
/// `readFrameCounter`, and a bar that moves. So each picture of a recording can be held against the truth. Two sessions
/// see the same pictures. A plain value; a script changes it at a moment, and a running capture follows with its next
/// picture. A phone's screen is one as well.
struct VirtualCamera {
    CMVideoDimensions size{640, 480};  ///< pixels; a device that is turned swaps them
    double framesPerSecond = 30;
    CMTime minFrameDuration = CMTime::make(1, 30);  ///< what the device tells of it; may be non-numeric
    /// By how much the device's own clock runs faster than the host clock, in millionths.
    double driftPPM = 0;
    /// Listed as ever, but no picture comes: behind a shutter, or the screen of a phone that is locked.
    bool isCovered = false;
    /// Pictures that are taken before this host time get lost.
    std::chrono::nanoseconds lostUntil{0};
    /// Pictures that are taken between these host times are white beside the clock.
    std::chrono::nanoseconds flashFrom{0}, flashUntil{0};
    /// How long after it was taken a picture is delivered, and by how much its time and its delivery scatter. Times
    /// rise as long as they scatter by less than the time between pictures.
    std::chrono::nanoseconds latency{0};
    std::chrono::nanoseconds jitter{0};
    /// Whether its samples have a format description.
    bool describesPictures = true;

    /// Pictures per second on the host clock.
    double trueRate() const { return framesPerSecond * (1 + driftPPM * 1e-6); }
    /// When the next picture after the one at `time` is taken, both in seconds since the desktop was made.
    double pictureAfter(double time) const;
    /// What a picture that is taken at `time` shows, in seconds since the desktop was made.
    static std::uint32_t shownMilliseconds(double time);
    /// Fills a '420v' picture of any size with what is seen at `time`.
    static void draw(double time, bool isFlash, CVPixelBuffer& picture);
};

}  // namespace zorvane
