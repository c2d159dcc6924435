// The way of a sound sample from its source to the file, the same for all recorders.
#pragma once

#include <memory>

#include "Zorvane/Internal/AVAssetWriterInputBufferAdaptor.hpp"
#include "Zorvane/Internal/AudioGapFiller.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/PrepareRingBufferAdaptor.hpp"
#include "Zorvane/Internal/Recorders/WriterSession.hpp"
#include "Zorvane/Internal/RecordingInterval.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {

/// Gaps are filled with silence; before the recording's start the newest samples are held; the first sample inside the
/// interval opens the session at `recordFrom` and replays what is held; from then on samples queue without bound for
/// the writer input, in order. `process` is called on one thread at a time, the rest on any.
class AudioSamplePath {
  public:
    AudioSamplePath(std::shared_ptr<AVAssetWriterInput> input, std::shared_ptr<WriterSession> session,
                    const StableRecordingInterval& interval, const Logger& logger);

    /// Takes one sample of the source. `toHostTime` tells a sample's time on the host clock.
    template <class ToHostTime>
    void process(const CMSampleBuffer& sampleBuffer, const ToHostTime& toHostTime) {
        for (const CMSampleBuffer& filled : fillGap(sampleBuffer)) {
            handle(filled, toHostTime(filled));
        }
    }

    /// Ends with the first sample, or throws `error` after `timeout` seconds without one.
    Task<> waitForSample(double timeout, ZVError error);

    /// Hands over what is still queued, looking again every `retryInterval` while the writer refuses. Throws the
    /// writer's error, and `ZVCancelled`.
    Task<> flush(const AVAssetWriter& writer, std::chrono::nanoseconds retryInterval,
                 std::chrono::nanoseconds retryTolerance);

  private:
    AudioGapFiller::Samples fillGap(const CMSampleBuffer& sampleBuffer);
    void handle(const CMSampleBuffer& sampleBuffer, CMTime hostTime);
    void replayHeldSamples();

    const Logger logger_;
    const std::shared_ptr<WriterSession> session_;
    StableRecordingInterval interval_;  // belongs to the source's queue, as the gap filler and didReplay_
    AudioGapFiller gapFiller_;
    PrepareRingBufferAdaptor<CMSampleBuffer> prepareAdaptor_;
    AVAssetWriterInputBufferAdaptor inputAdaptor_;
    bool didReplay_ = false;
};

}  // namespace zorvane
