#include "tests/Support/SampleCollector.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>

#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Virtual/VirtualFrameCounter.hpp"

namespace zorvane::test {
namespace {

constexpr std::chrono::seconds patience(10);  // real time; only a failing test waits so long

std::uint32_t centerPixel(const CVPixelBuffer& picture) {
    const CVPixelLayout& layout = picture.layout();
    const auto x = static_cast<std::size_t>(layout.width / 2);
    const auto y = static_cast<std::size_t>(layout.height / 2);
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, picture.bytes() + y * layout.bytesPerRow + x * sizeof(pixel), sizeof(pixel));
    return pixel;
}

CollectedSample collected(SCStream& stream, const CMSampleBuffer& buffer, SCStreamOutputType type) {
    CollectedSample sample;
    sample.type = type;
    sample.isValid = buffer.isValid();
    sample.stamp = buffer.presentationTimeStamp();
    sample.sound = buffer.audioBuffer();
    if (const auto status = buffer.attachments().frameStatus) {
        sample.status = static_cast<SCFrameStatus>(*status);
    }
    if (const CMClock* clock = stream.synchronizationClock()) {
        sample.hostTime = clock->convertToHostTime(sample.stamp).seconds();
    }
    if (const CVPixelBufferRef& image = buffer.imageBuffer()) {
        sample.layout = image->layout();
        sample.center = centerPixel(*image);
        sample.frameNumber = readFrameCounter(image->bytes(), image->layout());
    }
    return sample;
}

}  // namespace

void SampleCollector::stream(SCStream& stream, const CMSampleBuffer& sampleBuffer, SCStreamOutputType type) {
    CollectedSample sample = collected(stream, sampleBuffer, type);
    const std::lock_guard lock(mutex_);
    samples_.push_back(std::move(sample));
    if (keepsBuffers_) {
        kept_.push_back(sampleBuffer);
    }
    changed_.notify_all();
}

void SampleCollector::streamDidStopWithError(SCStream&, std::exception_ptr error) {
    const std::lock_guard lock(mutex_);
    stops_.push_back(std::move(error));
    changed_.notify_all();
}

void SampleCollector::streamDidBecomeInactive(SCStream&, std::exception_ptr reason) {
    const std::lock_guard lock(mutex_);
    absences_.push_back(std::move(reason));
    changed_.notify_all();
}

void SampleCollector::streamDidBecomeActive(SCStream&) {
    const std::lock_guard lock(mutex_);
    absences_.push_back(nullptr);
    changed_.notify_all();
}

void SampleCollector::keepBuffers(bool keep) {
    const std::lock_guard lock(mutex_);
    keepsBuffers_ = keep;
    if (!keep) {
        kept_.clear();
    }
}

std::size_t SampleCollector::keptBuffers() const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(
        std::count_if(kept_.begin(), kept_.end(), [](const CMSampleBuffer& kept) { return bool(kept.imageBuffer()); }));
}

std::vector<CollectedSample> SampleCollector::samples() const {
    const std::lock_guard lock(mutex_);
    return samples_;
}

std::vector<CollectedSample> SampleCollector::pictures() const {
    std::vector<CollectedSample> all = samples();
    std::erase_if(all, [](const CollectedSample& sample) { return !sample.isPicture(); });
    return all;
}

std::vector<std::exception_ptr> SampleCollector::absences() const {
    const std::lock_guard lock(mutex_);
    return absences_;
}

std::vector<std::exception_ptr> SampleCollector::stops() const {
    const std::lock_guard lock(mutex_);
    return stops_;
}

bool SampleCollector::waitUntil(const std::function<bool(const std::vector<CollectedSample>&)>& condition) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, patience, [&] { return condition(samples_); });
}

std::optional<SCStreamErrorCode> streamErrorCode(const std::exception_ptr& error) {
    if (!error) {
        return std::nullopt;
    }
    try {
        std::rethrow_exception(error);
    } catch (const NSError& described) {
        const bool isOfStream = described.domain() == SCStreamErrorDomain;
        return isOfStream ? std::optional(static_cast<SCStreamErrorCode>(described.code())) : std::nullopt;
    } catch (...) {
        return std::nullopt;
    }
}

SCStream::Completion CompletionResult::handler() {
    return [shared = shared_](std::exception_ptr error) {
        const std::lock_guard lock(shared->mutex);
        ++shared->calls;
        shared->error = std::move(error);
        shared->changed.notify_all();
    };
}

bool CompletionResult::hasCompleted() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->calls > 0;
}

std::exception_ptr CompletionResult::wait() const {
    std::unique_lock lock(shared_->mutex);
    EXPECT_TRUE(shared_->changed.wait_for(lock, patience, [this] { return shared_->calls > 0; })) << "no completion";
    EXPECT_LE(shared_->calls, 1);
    return shared_->error;
}

}  // namespace zorvane::test
