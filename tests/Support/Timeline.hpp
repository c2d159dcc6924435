// One-line builders of times and samples.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "Zorvane/Internal/RecordingInterval.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

inline void PrintTo(const CMTime& time, std::ostream* stream) {
    *stream << time.logDescription();
}

namespace testing {

inline constexpr std::int32_t nanosecondTimescale = 1'000'000'000;

/// A time in nanoseconds, or in another timescale.
constexpr CMTime at(double seconds, std::int32_t timescale = nanosecondTimescale) {
    return CMTime::fromSeconds(seconds, timescale);
}

/// What came out of a pipeline piece, one line each, to be compared with a table of texts such as "first c 5.5".
using Lines = std::vector<std::string>;

/// A shared interval that is started and stopped already where times are given.
inline std::shared_ptr<VolatileRecordingInterval> recording() {
    return std::make_shared<VolatileRecordingInterval>();
}
inline std::shared_ptr<VolatileRecordingInterval> recording(double from) {
    auto interval = recording();
    interval->start(from);
    return interval;
}
inline std::shared_ptr<VolatileRecordingInterval> recording(double from, double until) {
    auto interval = recording(from);
    interval->stop(until);
    return interval;
}

inline std::shared_ptr<const CMFormatDescription> audioDescription(const AVAudioFormat& format = {}) {
    CMFormatDescription description;
    description.mediaType = CMMediaType::audio;
    description.audioFormat = format;
    return std::make_shared<const CMFormatDescription>(description);
}

/// `frames` silent frames of 48 kHz sound that begin at `time`.
inline CMSampleBuffer sound(CMTime time, std::uint32_t frames,
                            std::shared_ptr<const CMFormatDescription> description = audioDescription()) {
    auto pcm = AVAudioPCMBuffer::make({}, frames);
    pcm->setFrameLength(frames);
    return CMSampleBuffer::audio(pcm, {CMTime::make(1, 48000), time, kCMTimeInvalid}, std::move(description));
}

/// A small picture that shows from `time`.
inline CMSampleBuffer picture(CMTime time) {
    static const auto pool = CVPixelBufferPool::make({4, 4, 16, CVPixelFormat::bgra, CGColorSpaceName::sRGB}, 8);
    return CMSampleBuffer::video(pool->take(), {kCMTimeInvalid, time, kCMTimeInvalid}, {});
}

}  // namespace testing
}  // namespace zorvane
