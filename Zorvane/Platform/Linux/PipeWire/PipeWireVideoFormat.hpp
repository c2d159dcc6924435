// What a camera can give, and which of it is taken.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVVideoConverter.hpp"
#include "Zorvane/Platform/CoreMedia/CMFormatDescription.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// Pictures per second as a fraction. Not known, or variable, when either number is 0.
struct PipeWireFrameRate {
    std::uint32_t frames = 0;
    std::uint32_t seconds = 1;

    bool isKnown() const { return frames > 0 && seconds > 0; }
    double perSecond() const { return isKnown() ? static_cast<double>(frames) / seconds : 0; }
    /// From picture to picture; invalid when the rate isn't known.
    CMTime frameDuration() const;

    bool operator==(const PipeWireFrameRate&) const = default;
};

/// One encoding in a range of sizes and of rates. Devices with fixed ones have an offer for each combination, whose
/// ranges are single values.
struct PipeWireVideoOffer {
    std::optional<AVVideoSourceFormat> encoding;  ///< absent for one that can't be converted, such as H.264
    CMVideoDimensions smallest;
    CMVideoDimensions largest;
    CMVideoDimensions step{1, 1};  ///< from one size of the range to the next
    PipeWireFrameRate slowest;
    PipeWireFrameRate fastest;

    bool operator==(const PipeWireVideoOffer&) const = default;
};

struct PipeWireVideoFormat {
    AVVideoSourceFormat encoding = AVVideoSourceFormat::yuyv;
    CMVideoDimensions size;
    PipeWireFrameRate rate;

    bool operator==(const PipeWireVideoFormat&) const = default;
};

/// Where a camera's pictures come from.
struct PipeWireVideoSource {
    std::uint64_t outputPort = 0;               ///< its serial number
    std::optional<PipeWireVideoFormat> format;  ///< that it is to deliver in, if it can

    bool operator==(const PipeWireVideoSource&) const = default;
};

/// Pictures of more than this many columns or rows are none.
inline constexpr std::int32_t largestVideoSide = 16384;

/// The one that a camera is to deliver in; nothing if none can be converted.
///
/// What moves comes first: rates under 24 are taken only where there is no other. Then the size: 1920 × 1080, else the
/// largest that fits into that, else the smallest one. Then the rate that is nearest to 30; then raw pictures before
/// JPEGs; then the camera's own order.
std::optional<PipeWireVideoFormat> chooseVideoFormat(const std::vector<PipeWireVideoOffer>& offers);

}  // namespace zorvane
