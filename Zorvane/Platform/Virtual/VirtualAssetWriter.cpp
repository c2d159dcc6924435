#include "Zorvane/Platform/Virtual/VirtualAssetWriter.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <span>
#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Foundation/NSException.hpp"
#include "Zorvane/Platform/Virtual/VirtualFrameCounter.hpp"

namespace zorvane {
namespace {

using std::chrono::nanoseconds;

nanoseconds fromSeconds(double seconds) {
    return nanoseconds(std::llround(seconds * 1e9));
}

constexpr std::uint64_t emptyDigest = 0xCBF29CE484222325;

// FNV-1a over words: a digest of a screen in a millisecond.
std::uint64_t extendedDigest(std::uint64_t digest, std::span<const std::byte> bytes) {
    for (std::size_t offset = 0; offset < bytes.size(); offset += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + offset, std::min(sizeof(word), bytes.size() - offset));
        digest = (digest ^ word) * 0x100000001B3;
    }
    return digest;
}

/// Of the pixels, whatever lies between the rows.
std::uint64_t digestOf(const CVPixelBuffer& picture) {
    const CVPixelLayout& layout = picture.layout();
    const auto width = static_cast<std::size_t>(layout.width);
    const std::size_t rowSize = layout.isBiPlanar() ? width : width * sizeof(std::uint32_t);
    std::uint64_t digest = emptyDigest;
    for (std::size_t row = 0; row < layout.byteSize(); row += layout.bytesPerRow) {
        digest = extendedDigest(digest, {picture.bytes() + row, rowSize});
    }
    return digest;
}

VirtualSampleRecord recordOf(const CMSampleBuffer& sample) {
    VirtualSampleRecord record;
    record.presentationTimeStamp = sample.presentationTimeStamp();
    record.duration = sample.duration();
    record.numSamples = sample.numSamples();
    record.sound = sample.audioBuffer();
    if (const CVPixelBufferRef& image = sample.imageBuffer()) {
        record.digest = digestOf(*image);
        record.dimensions = {.width = image->layout().width, .height = image->layout().height};
        record.frameNumber = readFrameCounter(image->bytes(), image->layout());
    } else if (record.sound) {
        record.digest = extendedDigest(emptyDigest, record.sound->bytes());
    }
    return record;
}

}  // namespace

/// One track's entry. The input may outlive the writer.
class VirtualAssetWriter::Sink final : public AVAssetWriterInputSink {
  public:
    Sink(std::weak_ptr<VirtualAssetWriter> writer, std::size_t track) : writer_(std::move(writer)), track_(track) {}

    bool isReadyForMoreMediaData() const override {
        auto writer = writer_.lock();
        return writer && writer->isReady();
    }
    bool append(const CMSampleBuffer& sample) override {
        auto writer = writer_.lock();
        return writer && writer->append(track_, sample);
    }
    void markAsFinished() override {
        if (auto writer = writer_.lock()) {
            writer->markAsFinished(track_);
        }
    }

  private:
    const std::weak_ptr<VirtualAssetWriter> writer_;
    const std::size_t track_;
};

std::shared_ptr<VirtualAssetWriter> VirtualAssetWriter::make(std::shared_ptr<HostClock> clock,
                                                             VirtualWritingConditions conditions,
                                                             std::filesystem::path url) {
    return std::shared_ptr<VirtualAssetWriter>(
        new VirtualAssetWriter(std::move(clock), std::move(conditions), std::move(url), std::nullopt));
}

std::shared_ptr<VirtualAssetWriter> VirtualAssetWriter::make(std::shared_ptr<HostClock> clock,
                                                             VirtualWritingConditions conditions,
                                                             AVAssetSegmenting segmenting) {
    return std::shared_ptr<VirtualAssetWriter>(
        new VirtualAssetWriter(std::move(clock), std::move(conditions), {}, std::move(segmenting)));
}

VirtualAssetWriter::VirtualAssetWriter(std::shared_ptr<HostClock> clock, VirtualWritingConditions conditions,
                                       std::filesystem::path url, std::optional<AVAssetSegmenting> segmenting)
    : AVAssetWriter(std::move(url)),
      clock_(std::move(clock)),
      conditions_(std::move(conditions)),
      segmenting_(std::move(segmenting)) {}

VirtualMovie VirtualAssetWriter::movie() const {
    MutexLock lock(mutex_);
    return movie_;
}

bool VirtualAssetWriter::canAddInput(const AVAssetWriterInput& input) const {
    MutexLock lock(mutex_);
    if (segmenter_) {
        return false;
    }
    return input.mediaType() == AVMediaType::video ? !conditions_.refusesVideoInput : !conditions_.refusesAudioInput;
}

std::shared_ptr<AVAssetWriterInputSink> VirtualAssetWriter::addInput(const AVAssetWriterInput& input) {
    VirtualTrackRecord track;
    track.mediaType = input.mediaType();
    track.expectsMediaDataInRealTime = input.expectsMediaDataInRealTime();
    if (track.mediaType == AVMediaType::video) {
        track.videoSettings = input.videoSettings();
    } else {
        track.audioSettings = input.audioSettings();
    }
    MutexLock lock(mutex_);
    if (segmenting_) {
        segmenter_.emplace(*segmenting_, track.mediaType,
                           [this](VirtualSegment segment) { handOut(std::move(segment)); });
    }
    movie_.tracks.push_back(std::move(track));
    return std::make_shared<Sink>(weak_from_this(), movie_.tracks.size() - 1);
}

void VirtualAssetWriter::doStartWriting() {
    if (conditions_.startError) {
        std::rethrow_exception(conditions_.startError);
    }
    const nanoseconds now = clock_->now();
    {
        MutexLock lock(mutex_);
        startTime_ = now;
    }
    if (conditions_.breakdown) {
        scheduleBreakdown(now + fromSeconds(conditions_.breakdown->after));
    }
}

void VirtualAssetWriter::scheduleBreakdown(nanoseconds time) {
    auto breakDown = [weak = weak_from_this(), error = conditions_.breakdown->error] {
        if (auto writer = weak.lock()) {
            writer->fail(error);
        }
    };
    auto handOver = [breakDown = std::move(breakDown)] { Executor::pool()->post(breakDown); };
    clock_->schedule(time, nanoseconds::zero(), std::move(handOver));
}

void VirtualAssetWriter::doStartSession(CMTime time) {
    MutexLock lock(mutex_);
    movie_.sessionStart = time;
    if (segmenter_) {
        segmenter_->startSession(time);
    }
}

void VirtualAssetWriter::doEndSession(CMTime time) {
    if (conditions_.raisesInEndSession) {
        throw NSException("NSInternalInconsistencyException", "The session can't be ended.");
    }
    MutexLock lock(mutex_);
    movie_.sessionEnd = time;
    if (segmenter_) {
        segmenter_->endSession(time);
    }
}

void VirtualAssetWriter::doFinishWriting(std::function<void(std::exception_ptr)> done) {
    if (conditions_.finish == VirtualWritingConditions::Finish::never) {
        return;
    }
    auto finish = [self = shared_from_this(), done = std::move(done)] {
        self->handOutLastSegments();
        self->segmentQueue_.async([self, done] { done(self->conditions_.finishError); });
    };
    const nanoseconds delay = fromSeconds(conditions_.finishDelay);
    if (delay > nanoseconds::zero()) {
        clock_->schedule(clock_->now() + delay, nanoseconds::zero(), std::move(finish));
    } else {
        finish();
    }
}

bool VirtualAssetWriter::isReady() const {
    if (status() != Status::writing) {
        return false;
    }
    if (!conditions_.refusesMedia) {
        return true;
    }
    MutexLock lock(mutex_);
    const nanoseconds elapsed = clock_->now() - startTime_;
    return elapsed < fromSeconds(conditions_.refusesMedia->from) ||
           elapsed >= fromSeconds(conditions_.refusesMedia->until);
}

bool VirtualAssetWriter::append(std::size_t track, const CMSampleBuffer& sample) {
    if (!isReady()) {
        return false;
    }
    VirtualSampleRecord record = recordOf(sample);
    {
        MutexLock lock(mutex_);
        if (appends_++ != conditions_.failingAppend) {
            if (segmenter_) {
                segmenter_->append(record.presentationTimeStamp, record.duration);
            }
            movie_.tracks[track].samples.push_back(std::move(record));
            return true;
        }
    }
    fail(std::make_exception_ptr(
        NSError(AVFoundationErrorDomain, AVErrorUnknown, {.localizedDescription = "The sample can't be written."})));
    return false;
}

void VirtualAssetWriter::markAsFinished(std::size_t track) {
    MutexLock lock(mutex_);
    movie_.tracks[track].isFinished = true;
}

void VirtualAssetWriter::handOut(VirtualSegment segment) {
    segmentQueue_.async([self = shared_from_this(), segment = std::move(segment)] {
        if (const auto delegate = self->segmenting_->delegate.lock()) {
            delegate->didOutputSegmentData(*self, segment.data, segment.type, segment.report);
        }
    });
}

void VirtualAssetWriter::handOutLastSegments() {
    MutexLock lock(mutex_);
    if (segmenter_) {
        segmenter_->finish();
    }
}

}  // namespace zorvane
