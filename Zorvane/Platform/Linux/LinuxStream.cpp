#include "Zorvane/Platform/Linux/LinuxStream.hpp"

#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/Foundation/NSProcessInfo.hpp"

namespace zorvane {
namespace {

std::exception_ptr goneWhileStarting() {
    return makeStreamError(SCStreamErrorCode::failedToStart, "The stream was let go of while it started.");
}

}  // namespace

/// Passes on what comes of the pictures as if it came of the stream that they are part of, which owns their stream and
/// so outlives all calls.
class LinuxStream::PictureRelay final : public SCStreamOutput, public SCStreamDelegate {
  public:
    explicit PictureRelay(LinuxStream& stream) : stream_(stream) {}

    void setOutput(std::weak_ptr<SCStreamOutput> output) {
        output_ = std::move(output);
        hasOutput_ = true;
    }
    bool hasOutput() const { return hasOutput_; }

    void stream(SCStream&, const CMSampleBuffer& sampleBuffer, SCStreamOutputType type) override {
        if (const auto output = output_.lock()) {
            output->stream(stream_, sampleBuffer, type);
        }
    }

    void streamDidStopWithError(SCStream&, std::exception_ptr error) override {
        stream_.picturesEnded(std::move(error));
    }

  private:
    LinuxStream& stream_;
    std::weak_ptr<SCStreamOutput> output_;
    bool hasOutput_ = false;
};

std::shared_ptr<LinuxStream> LinuxStream::make(LinuxStreamParts parts, const SCContentFilter& filter,
                                               const SCStreamConfiguration& configuration,
                                               std::weak_ptr<SCStreamDelegate> delegate) {
    return std::shared_ptr<LinuxStream>(new LinuxStream(std::move(parts), filter, configuration, std::move(delegate)));
}

LinuxStream::LinuxStream(LinuxStreamParts parts, const SCContentFilter& filter,
                         const SCStreamConfiguration& configuration, std::weak_ptr<SCStreamDelegate> delegate)
    : parts_(std::move(parts)),
      filter_(filter),
      configuration_(configuration),
      delegate_(std::move(delegate)),
      relay_(std::make_shared<PictureRelay>(*this)),
      pictures_(parts_.screens->makeStream(filter_, configuration_, relay_)) {}

LinuxStream::~LinuxStream() {
    state_ = State::ended;
    stopSound();
    pictures_.reset();
}

void LinuxStream::addStreamOutput(std::weak_ptr<SCStreamOutput> output, SCStreamOutputType type,
                                  DispatchQueue sampleHandlerQueue) {
    if (type == SCStreamOutputType::screen) {
        relay_->setOutput(std::move(output));
        pictures_->addStreamOutput(relay_, type, std::move(sampleHandlerQueue));
        return;
    }
    if (!configuration_.capturesAudio) {
        std::rethrow_exception(
            makeStreamError(SCStreamErrorCode::internalError, "The stream isn't configured to capture sound."));
    }
    soundReceiver_.emplace(Receiver{std::move(output), std::move(sampleHandlerQueue)});
    const PipeWireSystemSound::Settings settings{
        .audible = audibleProcesses(filter_, configuration_, processIdentifier()),
        .format = {.sampleRate = configuration_.sampleRate, .channelCount = configuration_.channelCount}};
    sound_ = std::make_unique<PipeWireSystemSound>(parts_.pipeWire, parts_.converting, settings, soundHandlers());
}

PipeWireSystemSound::Handlers LinuxStream::soundHandlers() {
    auto deliver = [this](const CMSampleBuffer& sample) {
        if (const auto output = soundReceiver_->output.lock()) {
            soundReceiver_->queue.sync([&] { output->stream(*this, sample, SCStreamOutputType::audio); });
        }
    };
    auto tell = [weak = weak_from_this()](std::exception_ptr absence) {
        const auto self = weak.lock();
        const auto delegate = self ? self->delegate_.lock() : nullptr;
        if (delegate) {
            absence ? delegate->streamDidBecomeInactive(*self, absence) : delegate->streamDidBecomeActive(*self);
        }
    };
    return {.sample = std::move(deliver), .availability = std::move(tell)};
}

void LinuxStream::startCapture(Completion completion) {
    if (!change(State::made, State::running)) {
        completion(makeStreamError(SCStreamErrorCode::attemptToStartStreamState, "The stream was started before."));
        return;
    }
    if (!sound_) {
        startPictures(std::move(completion));
        return;
    }
    if (!relay_->hasOutput()) {
        pictures_.reset();
    }
    sound_->start([weak = weak_from_this(), completion = std::move(completion)](std::exception_ptr error) {
        const auto self = weak.lock();
        if (!self) {
            completion(error ? error : goneWhileStarting());
        } else if (error) {
            self->failToStart(completion, error);
        } else {
            self->startPictures(completion);
        }
    });
}

void LinuxStream::startPictures(Completion completion) {
    if (!pictures_) {
        completion(nullptr);
        return;
    }
    pictures_->startCapture([this, completion = std::move(completion)](std::exception_ptr error) {
        error ? failToStart(completion, error) : completion(nullptr);
    });
}

/// Not on the calling thread, which may be one that mustn't wait for sound's.
void LinuxStream::failToStart(Completion completion, std::exception_ptr error) {
    state_ = State::ended;
    auto end = [self = shared_from_this(), completion = std::move(completion), error = std::move(error)] {
        self->stopSound();
        completion(error);
    };
    Executor::pool()->post(std::move(end));
}

void LinuxStream::stopCapture(Completion completion) {
    const bool wasRunning = change(State::running, State::ended);
    state_ = State::ended;
    stopSound();
    if (!wasRunning) {
        completion(makeStreamError(SCStreamErrorCode::attemptToStopStreamState, "The stream isn't running."));
    } else if (pictures_) {
        // An end of their own at this moment is a stop as well.
        pictures_->stopCapture([completion = std::move(completion)](std::exception_ptr) { completion(nullptr); });
    } else {
        completion(nullptr);
    }
}

/// The delegate may let go of the stream.
void LinuxStream::picturesEnded(std::exception_ptr error) {
    if (change(State::running, State::ended)) {
        stopSound();
        if (const auto delegate = delegate_.lock()) {
            delegate->streamDidStopWithError(*this, std::move(error));
        }
    }
}

bool LinuxStream::change(State from, State to) {
    return state_.compare_exchange_strong(from, to);
}

void LinuxStream::stopSound() {
    const std::lock_guard lock(stoppingSound_);
    if (sound_) {
        sound_->stop();
    }
}

}  // namespace zorvane
