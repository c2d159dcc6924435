// A writer that remembers what it was given, and may hand out segments of it.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/AVFoundation/AVAssetWriter.hpp"
#include "Zorvane/Platform/Virtual/VirtualMediaWriting.hpp"
#include "Zorvane/Platform/Virtual/VirtualSegmenter.hpp"

namespace zorvane {

/// What is kept of one sample. Pictures go back to their pool: of them stays a digest, and the number they show.
struct VirtualSampleRecord {
    CMTime presentationTimeStamp;
    CMTime duration;
    std::int64_t numSamples = 0;
    std::uint64_t digest = 0;                       ///< equal pictures have equal ones
    CMVideoDimensions dimensions;                   ///< of a picture
    std::optional<std::uint32_t> frameNumber;       ///< as `readFrameCounter` tells it
    std::shared_ptr<const AVAudioPCMBuffer> sound;  ///< null for pictures
};

struct VirtualTrackRecord {
    AVMediaType mediaType = AVMediaType::video;
    std::optional<AVVideoSettings> videoSettings;
    std::optional<AVAudioSettings> audioSettings;
    bool expectsMediaDataInRealTime = false;
    std::vector<VirtualSampleRecord> samples;  ///< as appended, not clipped by the session
    bool isFinished = false;
};

struct VirtualMovie {
    std::vector<VirtualTrackRecord> tracks;  ///< in the order in which they were added
    std::optional<CMTime> sessionStart;
    std::optional<CMTime> sessionEnd;
};

class VirtualAssetWriter final : public AVAssetWriter, public std::enable_shared_from_this<VirtualAssetWriter> {
  public:
    static std::shared_ptr<VirtualAssetWriter> make(std::shared_ptr<HostClock> clock,
                                                    VirtualWritingConditions conditions, std::filesystem::path url);
    /// A writer of segments of one track.
    static std::shared_ptr<VirtualAssetWriter> make(std::shared_ptr<HostClock> clock,
                                                    VirtualWritingConditions conditions, AVAssetSegmenting segmenting);

    /// A copy of what was written so far. Any thread.
    VirtualMovie movie() const;

  private:
    class Sink;

    VirtualAssetWriter(std::shared_ptr<HostClock> clock, VirtualWritingConditions conditions, std::filesystem::path url,
                       std::optional<AVAssetSegmenting> segmenting);

    bool canAddInput(const AVAssetWriterInput& input) const override;
    std::shared_ptr<AVAssetWriterInputSink> addInput(const AVAssetWriterInput& input) override;
    void doStartWriting() override;
    void doStartSession(CMTime time) override;
    void doEndSession(CMTime time) override;
    void doFinishWriting(std::function<void(std::exception_ptr)> done) override;

    /// Precondition: the conditions hold a breakdown.
    void scheduleBreakdown(std::chrono::nanoseconds time);
    bool isReady() const;
    bool append(std::size_t track, const CMSampleBuffer& sample);
    void markAsFinished(std::size_t track);
    void handOut(VirtualSegment segment);
    void handOutLastSegments();

    const std::shared_ptr<HostClock> clock_;
    const VirtualWritingConditions conditions_;
    const std::optional<AVAssetSegmenting> segmenting_;
    /// On which segments are handed out.
    const DispatchQueue segmentQueue_ = DispatchQueue::serial("VirtualAssetWriter.Segments");
    mutable Mutex mutex_;
    VirtualMovie movie_ ZV_GUARDED_BY(mutex_);
    std::optional<VirtualSegmenter> segmenter_ ZV_GUARDED_BY(mutex_);  // once there is an input
    std::size_t appends_ ZV_GUARDED_BY(mutex_) = 0;
    std::chrono::nanoseconds startTime_ ZV_GUARDED_BY(mutex_){0};
};

}  // namespace zorvane
