#include "Zorvane/Internal/Recorders/WriterSession.hpp"

#include <utility>

#include "Zorvane/Internal/AVAssetWriterSafeCalls.hpp"

namespace zorvane {
namespace {

constexpr std::int32_t nanoseconds = 1'000'000'000;

/// Of a stream that nothing is recorded for there is no session.
template <class Operation>
void forUsedWriters(const OutputAssetWriters& writers, const Operation& operation) {
    AVAssetWriter& audio = writers.audioAssetWriter();
    AVAssetWriter& video = writers.videoAssetWriter();
    if (audio.hasInputs()) {
        operation(audio, AVMediaType::audio);
    }
    if (video.hasInputs()) {
        operation(video, AVMediaType::video);
    }
}

/// A time of the recording as the writer of this media counts it.
CMTime sessionTime(const OutputAssetWriters& writers, AVMediaType media, CMTime time, CMTime recordFrom) {
    return media == AVMediaType::video && writers.expectsZeroBasedVideoPTS() ? time - recordFrom : time;
}

}  // namespace

WriterSession::WriterSession(std::shared_ptr<OutputAssetWriters> writers, std::string queueLabel)
    : writers_(std::move(writers)), startingQueue_(DispatchQueue::serial(std::move(queueLabel))) {}

void WriterSession::startIfNeeded(CMTime recordFrom) {
    if (!didStart()) {
        startingQueue_.sync([&] { start(recordFrom); });
    }
}

void WriterSession::start(CMTime recordFrom) {
    if (didStart()) {
        return;
    }
    forUsedWriters(*writers_, [&](AVAssetWriter& writer, AVMediaType media) {
        writer.startSession(sessionTime(*writers_, media, recordFrom, recordFrom));
    });
    didStart_.store(true, std::memory_order_release);
}

void endSessions(const OutputAssetWriters& writers, const StableRecordingInterval& interval) {
    const CMTime recordFrom = CMTime::fromSeconds(interval.recordFrom(), nanoseconds);
    const CMTime recordUntil = CMTime::fromSeconds(interval.recordUntil(), nanoseconds);
    forUsedWriters(writers, [&](AVAssetWriter& writer, AVMediaType media) {
        safe_endSession(writer, sessionTime(writers, media, recordUntil, recordFrom));
    });
}

}  // namespace zorvane
