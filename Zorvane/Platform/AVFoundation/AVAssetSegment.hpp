// The pieces that a segmented writer hands out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "Zorvane/Platform/AVFoundation/AVMediaType.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

class AVAssetWriter;

enum class AVAssetSegmentType : std::uint8_t {
    initialization = 1,  ///< what a player must have read before any other segment
    separable = 2,       ///< media that begins with a key frame
};

/// What a media segment holds.
struct AVAssetSegmentReport {
    AVMediaType mediaType = AVMediaType::video;
    CMTime earliestPresentationTimeStamp;  ///< since the session's start
    CMTime duration;
};

/// Receives a writer's segments, on a thread of the writer, one at a time, in order; after the writer's finish none.
class AVAssetWriterDelegate {
  public:
    virtual ~AVAssetWriterDelegate() = default;

    /// `data` is the writer's and valid during the call. An initialization segment has no report.
    virtual void didOutputSegmentData(AVAssetWriter& writer, std::span<const std::byte> data, AVAssetSegmentType type,
                                      const std::optional<AVAssetSegmentReport>& report) = 0;
};

/// How a writer cuts its media.
struct AVAssetSegmenting {
    /// A segment ends with the first key frame at or after each multiple of this; video gets a key frame there.
    CMTime preferredOutputSegmentInterval;
    /// The time of the first media in the segments, whatever the session's start.
    CMTime initialSegmentStartTime;
    /// Held weakly. Set before `startWriting`.
    std::weak_ptr<AVAssetWriterDelegate> delegate;
};

}  // namespace zorvane
