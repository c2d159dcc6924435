// Turns sound of one format into another: rate, channels, sample type.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "Zorvane/Platform/AVFoundation/AVAudioFormat.hpp"

namespace zorvane {

/// A stream of sound through a converter, with the little that filters hold back inside. Used by one thread at a time.
/// Nothing allocates once the largest block has been seen.
class AVAudioConverter {
  public:
    virtual ~AVAudioConverter() = default;

    /// Takes all of `input` and writes what comes out of it to `output`, in whole frames; returns how many. What
    /// doesn't fit stays inside and comes first the next time. Throws `NSError`.
    virtual std::size_t convert(std::span<const std::byte> input, std::span<std::byte> output) = 0;

    /// By how much the source runs faster than its nominal rate, as a fraction: 0.0002 makes 200 ppm fewer frames of
    /// it. Small and smooth changes can't be heard. What is done is within a millionth of what is asked; who wants no
    /// drift at all steers by `heldFrames`. Only of a converter that was made adjustable.
    virtual void setRateDeviation(double deviation) = 0;

    /// How much of what was taken has not come out, in frames of the input and parts of them: the frame that comes next
    /// is the sound so long before the end of what was taken. Filters delay nothing beyond that.
    virtual double heldFrames() const = 0;

    /// Forgets what is held, as if newly made.
    virtual void reset() = 0;
};

/// Makes converters; one per platform. Any thread.
class AVAudioConverting {
  public:
    enum class Rate : std::uint8_t { fixed, adjustable };

    virtual ~AVAudioConverting() = default;

    /// Throws `NSError` for formats that can't be converted. More channels are mixed down as loudspeakers would be;
    /// mono goes to all.
    virtual std::unique_ptr<AVAudioConverter> makeConverter(const AVAudioFormat& from, const AVAudioFormat& to,
                                                            Rate rate) = 0;
};

}  // namespace zorvane
