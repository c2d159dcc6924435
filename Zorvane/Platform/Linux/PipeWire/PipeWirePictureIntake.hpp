// Makes samples of a camera's pictures.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string_view>

#include "Zorvane/Platform/AVFoundation/AVVideoConverter.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWirePlanes.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoFormat.hpp"

namespace zorvane {

/// Converts into pictures of a pool, which is made anew when the size changes. Of one thread. Nothing allocates while
/// the format stays the same.
class PipeWirePictureIntake {
  public:
    /// `converting` outlives it.
    explicit PipeWirePictureIntake(AVVideoConverting& converting) : converting_(converting) {}

    /// The picture in the first `count` pieces, as a sample. Not a valid one for what isn't delivered: a picture that
    /// is broken, that isn't later than the last one, or that there is no room for because the receiver holds all that
    /// it may. Never throws.
    CMSampleBuffer take(const PipeWirePieces& pieces, std::size_t count, const PipeWireVideoFormat& format,
                        std::chrono::nanoseconds time) noexcept;

    /// So many pictures before this one didn't get here.
    void reportDrops(std::uint64_t count) noexcept;

  private:
    void adopt(const PipeWireVideoFormat& format);
    CMSampleBuffer convert(const AVVideoSourcePicture& picture, std::chrono::nanoseconds time);
    void report(std::string_view problem, std::string_view detail, std::uint64_t count) noexcept;

    AVVideoConverting& converting_;
    PipeWireVideoFormat format_;
    std::unique_ptr<AVVideoConverter> converter_;  // null until there is a format that can be converted
    std::shared_ptr<CVPixelBufferPool> pool_;
    std::shared_ptr<const CMFormatDescription> description_;
    std::chrono::nanoseconds last_ = std::chrono::nanoseconds::min();
    std::chrono::nanoseconds lastReport_ = std::chrono::nanoseconds::min();
    std::uint64_t unreported_ = 0;
};

}  // namespace zorvane
