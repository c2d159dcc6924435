// The way of a picture from its source to the file, the same for all recorders.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "Zorvane/Internal/AVAssetWriterInputDropAdaptor.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/PrepareRingBufferAdaptor.hpp"
#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/Internal/Recorders/MediaOutput.hpp"
#include "Zorvane/Internal/Recorders/RecordingEndWatch.hpp"
#include "Zorvane/Internal/RecordingInterval.hpp"
#include "Zorvane/Internal/RecordingIntervalBoundedRetimer.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {

/// A picture is held for the recorder's preparation, then goes through the retimer, which clips to the recording, to
/// the writer's input, which drops it when it isn't ready. The first one of the recording opens the writers' session.
/// Until the path is connected to an output, only the newest picture is kept, which opens the way once it is.
///
/// `connect` comes on the thread of the pictures, or before them; the rest on any. In the steady state nothing is
/// allocated.
class VideoSamplePath {
  public:
    VideoSamplePath(const StableRecordingInterval& interval, const Logger& logger);
    VideoSamplePath(const VideoSamplePath&) = delete;
    VideoSamplePath& operator=(const VideoSamplePath&) = delete;

    /// Where the pictures go from now on: to this input of the output. Once.
    void connect(const MediaOutput& output, std::shared_ptr<AVAssetWriterInput> input);

    /// Takes one picture of the source, at its time on the host clock: `hold` and `append` in one. Throws as `append`.
    void process(const CMSampleBuffer& sampleBuffer, CMTime hostTime);

    /// Keeps the newest picture, and ends the wait for the first.
    void hold(const CMSampleBuffer& sampleBuffer, CMTime hostTime);

    /// Hands a picture that shows from `time` on, on the host clock, to the output. Throws the retimer's errors.
    void append(const CMSampleBuffer& sampleBuffer, CMTime time);

    /// Gives the newest picture, or the first to come; throws `error` after `timeout` seconds without one.
    Task<CMSampleBuffer> waitForSample(double timeout, ZVError error) const;

    /// Waits for the pictures up to `recordUntil`; see `RecordingEndWatch`.
    Task<> waitForEnd() const;

    /// Closes the track at `recordUntil`, with the picture that shows there. Once, when no more pictures come and the
    /// path is connected. Throws the retimer's errors.
    void finish();

    /// Gives back the picture that is held, with which its whole pool would stay in memory.
    void letGoOfPictures() { held_.clear(); }

    /// Adds the pictures written and dropped so far.
    void addTo(RecorderStatistics& statistics) const;

  private:
    using Retimer = RecordingIntervalBoundedRetimer<CMSampleBuffer>;

    struct Picture {
        CMSampleBuffer sampleBuffer;
        CMTime hostTime;
    };

    struct Output {
        std::shared_ptr<OutputAssetWriters> writers;
        std::shared_ptr<WriterSession> session;
        AVAssetWriterInputDropAdaptor inputAdaptor;
        Retimer retimer;
    };

    void write(Retimer::Position position, const CMSampleBuffer& original, CMTime newTime);
    void openSession(CMTime sessionStart);
    bool closesOutput(CMTime outputTime) const;
    StableRecordingInterval currentInterval() const;

    const Logger logger_;
    const StableRecordingInterval interval_;  // copied and refreshed where it is read
    PrepareRingBufferAdaptor<Picture> held_;
    RecordingEndWatch endWatch_;
    std::unique_ptr<Output> output_;  // null until connected

    // Counted where they happen, read by anyone.
    std::atomic<std::uint64_t> framesWritten_{0};
    std::atomic<std::uint64_t> framesDropped_{0};
};

}  // namespace zorvane
