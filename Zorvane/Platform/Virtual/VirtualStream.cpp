#include "Zorvane/Platform/Virtual/VirtualStream.hpp"

#include <utility>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Foundation/NSProcessInfo.hpp"
#include "Zorvane/Platform/Virtual/VirtualPictureSource.hpp"
#include "Zorvane/Platform/Virtual/VirtualSoundSource.hpp"

namespace zorvane {

using std::chrono::nanoseconds;

namespace {

NSError streamError(SCStreamErrorCode code, const char* description) {
    return NSError(SCStreamErrorDomain, static_cast<std::int64_t>(code), {.localizedDescription = description});
}

bool isUsable(const SCStreamConfiguration& configuration) {
    const bool hasSource = !configuration.sourceRect ||
                           (configuration.sourceRect->size.width > 0 && configuration.sourceRect->size.height > 0);
    return hasSource && configuration.width > 0 && configuration.height > 0 && configuration.queueDepth > 0 &&
           configuration.minimumFrameInterval.isNumeric();
}

}  // namespace

std::shared_ptr<VirtualStream> VirtualStream::make(std::shared_ptr<VirtualDesktop> desktop,
                                                   const SCContentFilter& filter,
                                                   const SCStreamConfiguration& configuration,
                                                   std::weak_ptr<SCStreamDelegate> delegate) {
    std::shared_ptr<VirtualStream> stream(
        new VirtualStream(std::move(desktop), filter, configuration, std::move(delegate)));
    stream->makeSources(filter, configuration);
    return stream;
}

VirtualStream::VirtualStream(std::shared_ptr<VirtualDesktop> desktop, const SCContentFilter& filter,
                             const SCStreamConfiguration& configuration, std::weak_ptr<SCStreamDelegate> delegate)
    : desktop_(std::move(desktop)),
      displayID_(filter.display.displayID),
      capturesAudio_(configuration.capturesAudio),
      isConfigured_(isUsable(configuration)),
      delegate_(std::move(delegate)),
      clock_(desktop_->withState([](VirtualDesktopState& state) {
          const auto offset = state.conditions.streamClockOffset;
          return offset ? std::make_optional<VirtualClock>(*offset) : std::nullopt;
      })) {}

// A sample on its way holds the stream; a source never does.
void VirtualStream::makeSources(const SCContentFilter& filter, const SCStreamConfiguration& configuration) {
    auto deliver = [weak = weak_from_this()](const CMSampleBuffer& sample, SCStreamOutputType type) {
        if (auto stream = weak.lock()) {
            stream->deliver(sample, type);
        }
    };
    pictures_ = std::make_shared<VirtualPictureSource>(desktop_, filter, configuration, deliver);
    sounds_ = std::make_shared<VirtualSoundSource>(
        desktop_, audibleProcesses(filter, configuration, processIdentifier()), configuration,
        [deliver](const CMSampleBuffer& sample) { deliver(sample, SCStreamOutputType::audio); });
}

VirtualStream::~VirtualStream() {
    stopSources();
}

void VirtualStream::stopSources() {
    pictures_->stop();
    sounds_->stop();
}

// What is no sound comes with the pictures.
std::optional<VirtualStream::Receiver>& VirtualStream::receiver(SCStreamOutputType type) {
    return type == SCStreamOutputType::audio ? audioReceiver_ : screenReceiver_;
}

void VirtualStream::addStreamOutput(std::weak_ptr<SCStreamOutput> output, SCStreamOutputType type,
                                    DispatchQueue sampleHandlerQueue) {
    const bool isRefused =
        desktop_->withState([type](VirtualDesktopState& state) { return state.conditions.refusedOutput == type; });
    const bool hasSamples = type == SCStreamOutputType::screen || capturesAudio_;
    if (isRefused || !hasSamples) {
        throw streamError(SCStreamErrorCode::internalError, "The stream has no samples of this type.");
    }
    if (state_ != State::made || receiver(type)) {
        throw streamError(SCStreamErrorCode::internalError, "Outputs are added once per type, before the start.");
    }
    receiver(type) = Receiver{std::move(output), std::move(sampleHandlerQueue)};
}

std::exception_ptr VirtualStream::obstacleToStart() const {
    return desktop_->withState([this](VirtualDesktopState& state) -> std::exception_ptr {
        if (!state.conditions.allowsScreenCapture()) {
            return std::make_exception_ptr(streamError(SCStreamErrorCode::userDeclined, "Capture is not permitted."));
        }
        if (screenReceiver_ && !isConfigured_) {
            return std::make_exception_ptr(
                streamError(SCStreamErrorCode::failedToStart, "The configuration has an empty size or no interval."));
        }
        if (!state.scene.find(displayID_)) {
            return std::make_exception_ptr(
                streamError(SCStreamErrorCode::noCaptureSource, "There is no such display."));
        }
        return state.conditions.streamStartError;
    });
}

void VirtualStream::startCapture(Completion completion) {
    const std::exception_ptr obstacle = obstacleToStart();
    State expected = State::made;
    if (!state_.compare_exchange_strong(expected, obstacle ? State::stopped : State::running)) {
        completion(std::make_exception_ptr(
            streamError(SCStreamErrorCode::attemptToStartStreamState, "A stream is started once.")));
        return;
    }
    if (obstacle) {
        completion(obstacle);
        return;
    }
    const nanoseconds stampOffset = clock_ ? clock_->behind() : desktop_->clock()->now();
    desktop_->add(weak_from_this());
    pictures_->strand()->post([completion = std::move(completion)] { completion(nullptr); });
    if (screenReceiver_) {
        pictures_->start(stampOffset);
    }
    if (audioReceiver_) {
        sounds_->start(stampOffset);
    }
}

// The completion goes the way of the samples, over both strands, and so comes after the last of each.
void VirtualStream::stopCapture(Completion completion) {
    State expected = State::running;
    if (!state_.compare_exchange_strong(expected, State::stopped)) {
        completion(std::make_exception_ptr(
            streamError(SCStreamErrorCode::attemptToStopStreamState, "The stream is not running.")));
        return;
    }
    stopSources();
    pictures_->strand()->post([sounds = sounds_, completion = std::move(completion)] {
        sounds->strand()->post([completion] { completion(nullptr); });
    });
}

const CMClock* VirtualStream::synchronizationClock() const {
    return clock_ ? &*clock_ : nullptr;
}

void VirtualStream::pictureChanged() {
    pictures_->pictureChanged();
}

void VirtualStream::oddSample(VirtualOddSample kind) {
    pictures_->deliverOdd(kind);
}

void VirtualStream::stopped(std::exception_ptr error) {
    State expected = State::running;
    if (!state_.compare_exchange_strong(expected, State::stopped)) {
        return;
    }
    stopSources();
    pictures_->strand()->post([weak = weak_from_this(), error] {
        auto stream = weak.lock();
        auto delegate = stream ? stream->delegate_.lock() : nullptr;
        if (delegate) {
            delegate->streamDidStopWithError(*stream, error);
        }
    });
}

void VirtualStream::soundInterrupted(std::exception_ptr reason) {
    if (!audioReceiver_ || state_ != State::running) {
        return;
    }
    sounds_->strand()->post([weak = weak_from_this(), reason] {
        auto stream = weak.lock();
        auto delegate = stream ? stream->delegate_.lock() : nullptr;
        if (delegate && reason) {
            delegate->streamDidBecomeInactive(*stream, reason);
        } else if (delegate) {
            delegate->streamDidBecomeActive(*stream);
        }
    });
}

void VirtualStream::deliver(const CMSampleBuffer& sample, SCStreamOutputType type) {
    const std::optional<Receiver>& receiver = this->receiver(type);
    auto output = receiver ? receiver->output.lock() : nullptr;
    if (!output) {
        return;
    }
    const PoolBlockingScope blocking;  // the receiver may wait for others
    receiver->queue.sync([&] {
        if (state_ == State::running) {
            output->stream(*this, sample, type);
        }
    });
}

}  // namespace zorvane
