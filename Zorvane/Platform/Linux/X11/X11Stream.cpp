#include "Zorvane/Platform/Linux/X11/X11Stream.hpp"

#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Platform/Linux/X11/BrokenPipeSignal.hpp"
#include "Zorvane/Platform/Linux/X11/XAnswerLimit.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"

namespace zorvane {
namespace {

CMSampleTimingInfo timingAt(std::chrono::nanoseconds time) {
    constexpr std::int32_t nanosecondsPerSecond = 1'000'000'000;
    return {.presentationTimeStamp = CMTime::make(time.count(), nanosecondsPerSecond)};
}

CMSampleAttachments attachmentsFor(SCFrameStatus status) {
    return {.frameStatus = static_cast<std::int32_t>(status)};
}

}  // namespace

X11Stream::X11Stream(SCContentFilter filter, SCStreamConfiguration configuration,
                     std::weak_ptr<SCStreamDelegate> delegate)
    : filter_(std::move(filter)), configuration_(std::move(configuration)), delegate_(std::move(delegate)) {}

X11Stream::~X11Stream() {
    endRunning();
    joinThread();
}

void X11Stream::addStreamOutput(std::weak_ptr<SCStreamOutput> output, SCStreamOutputType type,
                                DispatchQueue sampleHandlerQueue) {
    if (type != SCStreamOutputType::screen) {
        std::rethrow_exception(makeStreamError(SCStreamErrorCode::internalError, "An X server has no sound."));
    }
    output_ = std::move(output);
    queue_ = std::move(sampleHandlerQueue);
}

void X11Stream::startCapture(Completion completion) {
    {
        const std::lock_guard lock(mutex_);
        if (state_ == State::made) {
            state_ = State::running;
            thread_ = std::thread([this, started = std::move(completion)] { capture(started); });
            return;
        }
    }
    completion(makeStreamError(SCStreamErrorCode::attemptToStartStreamState, "The stream was started before."));
}

void X11Stream::stopCapture(Completion completion) {
    if (!endRunning()) {
        completion(makeStreamError(SCStreamErrorCode::attemptToStopStreamState, "The stream isn't running."));
        return;
    }
    joinThread();
    completion(nullptr);
}

/// True if the stream was running; its thread then ends, whatever it waits for.
bool X11Stream::endRunning() {
    const std::lock_guard lock(mutex_);
    if (state_ != State::running) {
        state_ = State::ended;
        return false;
    }
    state_ = State::ended;
    if (connection_) {
        connection_->hangUp();
    }
    return true;
}

/// The delegate, which is told of an error on the thread, may let go of the stream there; the thread touches it no
/// more.
void X11Stream::joinThread() {
    if (thread_.get_id() == std::this_thread::get_id()) {
        thread_.detach();
    } else if (thread_.joinable()) {
        const PoolBlockingScope blocking;  // the thread's last sample may wait for a job of the pool
        thread_.join();
    }
}

void X11Stream::capture(Completion started) {
    setCurrentThreadName("zv.screen");
    blockBrokenPipeSignal();
    std::exception_ptr error;
    try {
        runLoop(started);
    } catch (...) {
        error = std::current_exception();
    }
    const bool wasRunning = endRunning();
    if (!wasRunning) {
        error = makeStreamError(SCStreamErrorCode::failedToStart, "The stream was stopped while it started.");
    }
    if (started) {
        started(std::move(error));
    } else if (const auto delegate = delegate_.lock(); delegate && wasRunning) {
        delegate->streamDidStopWithError(*this, std::move(error));
    }
}

/// Comes back by an exception only; `started` is empty once the loop runs.
void X11Stream::runLoop(Completion& started) {
    const auto connection = XConnection::open();
    publish(connection);
    std::optional<XAnswerLimit> limit(connection);
    ScreenCaptureLoop loop(*connection, filter_, configuration_);
    limit.reset();
    std::exchange(started, nullptr)(nullptr);
    loop.run(*this);
}

void X11Stream::publish(std::shared_ptr<XConnection> connection) {
    const std::lock_guard lock(mutex_);
    if (state_ != State::running) {
        connection->hangUp();
    }
    connection_ = std::move(connection);
}

void X11Stream::screenChanged(const CVPixelBufferRef& picture, std::chrono::nanoseconds time) {
    deliver(CMSampleBuffer::video(picture, timingAt(time), attachmentsFor(SCFrameStatus::complete)));
}

void X11Stream::screenFellStill(std::chrono::nanoseconds time) {
    deliver(CMSampleBuffer::notice(timingAt(time), attachmentsFor(SCFrameStatus::idle)));
}

void X11Stream::deliver(const CMSampleBuffer& sample) {
    if (const auto output = output_.lock()) {
        queue_->sync([&] { output->stream(*this, sample, SCStreamOutputType::screen); });
    }
}

}  // namespace zorvane
