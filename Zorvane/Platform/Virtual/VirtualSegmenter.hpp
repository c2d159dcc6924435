// Cuts what a virtual writer is given into segments.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVAssetSegment.hpp"

namespace zorvane {

struct VirtualSegment {
    AVAssetSegmentType type = AVAssetSegmentType::separable;
    std::optional<AVAssetSegmentReport> report;
    std::vector<std::byte> data;
};

/// Decides where segments begin and end: exactly at the multiples of the preferred interval, the last one at the
/// session's end. Their data are `bytesPerSample` of nothing for each sample. Used by one thread at a time.
class VirtualSegmenter {
  public:
    static constexpr std::size_t bytesPerSample = 100;

    using Output = std::function<void(VirtualSegment segment)>;

    VirtualSegmenter(AVAssetSegmenting segmenting, AVMediaType mediaType, Output output);

    void startSession(CMTime time) { start_ = time; }
    void endSession(CMTime time) { end_ = time; }
    /// Hands out the segments that this sample is not part of.
    void append(CMTime presentationTime, CMTime duration);
    void finish();

  private:
    struct Sample {
        CMTime begin;  // since the session's start
        CMTime end;
    };

    void handOutUntil(CMTime end);

    const AVAssetSegmenting segmenting_;
    const AVMediaType mediaType_;
    const Output output_;
    CMTime start_ = kCMTimeZero;
    std::optional<CMTime> end_;
    CMTime segmentStart_ = kCMTimeZero;
    bool didInitialize_ = false;
    std::vector<Sample> samples_;  // not handed out yet
};

}  // namespace zorvane
