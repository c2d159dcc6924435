// The pieces that a segmented writer hands out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

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
    CMTime earliestPresentationTimeStamp;  ///< the first segment's is the initial start time
    CMTime duration;
    /// The codec as RFC 6381 names it, such as "avc1.640028". Nothing if the writer doesn't know.
    std::optional<std::string> codecName = std::nullopt;
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
    /// Video is cut exactly at each multiple of this: a picture on show across it is encoded again there, as a key
    /// frame. Sound is cut at the packet boundary nearest to each multiple.
    CMTime preferredOutputSegmentInterval;
    /// The time of the first media in the segments, whatever the session's start.
    CMTime initialSegmentStartTime;
    /// Held weakly. Set before `startWriting`.
    std::weak_ptr<AVAssetWriterDelegate> delegate;
};

}  // namespace zorvane
