#include "Zorvane/Internal/Recorders/MicrophoneCapture.hpp"

#include <fmt/format.h>

#include <string_view>
#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/RecorderUserMessages.hpp"
#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/ZVAuthorizationStatus.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

constexpr double firstSampleTimeout = 3.0;  // seconds

[[noreturn]] void fail(std::string_view message, const Logger& logger) {
    logger.error(message);
    throw ZVError::internalError(message);
}

ZVError noAudioError() {
    return ZVError::internalError("No audio samples received from microphone.",
                                  "No audio from microphone, make sure it's unmuted and powered on.");
}

AVCaptureDeviceInput openDevice(const std::shared_ptr<AVCaptureDevice>& device, const Logger& logger) {
    try {
        return Platform::current()->captureDevices->makeDeviceInput(device);
    } catch (...) {
        logger.error("Can't open audio device.", errorMetadata(std::current_exception()));
        fail("Can't find audio device: " + device->uniqueID(), logger);
    }
}

}  // namespace

std::shared_ptr<AVCaptureDevice> requireMicrophone(const std::string& microphoneID, const Logger& logger) {
    const PoolBlockingScope blocking;
    if (ZVAuthorizationStatus::microphone() != AVAuthorizationStatus::authorized) {
        logger.error("Missing required microphone permission. See ZVAuthorizationStatus.");
        throw ZVError::badOperation("To record audio, microphone access is required. See ZVAuthorizationStatus.");
    }
    auto device = Platform::current()->captureDevices->deviceWithUniqueID(microphoneID);
    if (!device) {
        throwMicrophoneNoAVCaptureDevice(microphoneID, logger);
        fail("Can't find audio device: " + microphoneID, logger);
    }
    logger.debug("Found audio device.", [&] {
        return LogMetadata{{"modelID", device->modelID()},
                           {"localizedName", device->localizedName()},
                           {"isConnected", fmt::format("{}", device->isConnected())},
                           {"isSuspended", fmt::format("{}", device->isSuspended())},
                           {"isInUseByAnotherApplication", fmt::format("{}", device->isInUseByAnotherApplication())}};
    });
    return device;
}

/// Receives the session's samples. It outlives the session's deliveries, and never owns the session.
class MicrophoneCapture::Coordinator final : public AVCaptureDataOutputSampleBufferDelegate {
  public:
    Coordinator(std::unique_ptr<AudioSamplePath> audioPath, const AVCaptureDataOutput& audioOutput,
                const AVCaptureSession& session, const Logger& logger)
        : path(std::move(audioPath)), audioOutput_(audioOutput), session_(session), logger_(logger) {}

    void captureOutput(const AVCaptureDataOutput& output, const CMSampleBuffer& sampleBuffer) override {
        if (&output == &audioOutput_) {
            path->process(sampleBuffer, session_.synchronizationClock());
        } else if (!std::exchange(didLogUnknownOutputWarning_, true)) {
            logger_.warning("Got data from unknown output, ignoring.", [&] {
                return LogMetadata{{"output", output.queue().label()}};
            });
        }
    }

    const std::unique_ptr<AudioSamplePath> path;

  private:
    const AVCaptureDataOutput& audioOutput_;
    const AVCaptureSession& session_;
    const Logger logger_;
    bool didLogUnknownOutputWarning_ = false;  // of the sample queue
};

MicrophoneCapture::MicrophoneCapture(const std::shared_ptr<AVCaptureDevice>& device, DispatchQueue sampleBufferQueue,
                                     std::unique_ptr<AudioSamplePath> path, const Logger& logger,
                                     NoticeHandler onNotice)
    : logger_(logger),
      microphoneID_(device->uniqueID()),
      microphoneName_(device->localizedName()),
      audioOutput_(std::make_shared<AVCaptureDataOutput>(AVMediaType::audio, std::move(sampleBufferQueue))) {
    const PoolBlockingScope blocking;
    session_ = Platform::current()->captureDevices->makeCaptureSession();
    coordinator_ = std::make_shared<Coordinator>(std::move(path), *audioOutput_, *session_, logger_);
    audioOutput_->setSampleBufferDelegate(coordinator_);
    setUp(device);
    observeInterruptions(std::move(onNotice));
}

MicrophoneCapture::~MicrophoneCapture() = default;

void MicrophoneCapture::setUp(const std::shared_ptr<AVCaptureDevice>& device) {
    AVCaptureDeviceInput audioInput = openDevice(device, logger_);
    if (!session_->canAddInput(audioInput)) {
        fail("Can't add audioInput to session.", logger_);
    }
    session_->addInput(std::move(audioInput));
    if (!session_->canAddOutput(*audioOutput_)) {
        fail("Can't add audioOutput to session.", logger_);
    }
    session_->addOutput(audioOutput_);
    if (!session_->hasEnabledConnection(AVMediaType::audio)) {
        fail("Can't find enabled audio connection.", logger_);
    }
}

void MicrophoneCapture::observeInterruptions(NoticeHandler onNotice) {
    const SourceNotices notices(microphoneName_, std::move(onNotice), logger_);
    interruptions_ = session_->observeInterruptions([notices](AVMediaType, const std::exception_ptr& reason) {
        if (reason) {
            notices.interrupted(reason);
        } else {
            notices.resumed();
        }
    });
}

void MicrophoneCapture::startRunning() {
    const PoolBlockingScope blocking;
    session_->startRunning();
    if (session_->synchronizationClock()) {
        logger_.debug("AVCaptureSession has a synchronization clock available.", [] {
            return LogMetadata{{"synchronizationClock", "available"}};
        });
    } else {
        logger_.warning("AVCaptureSession has no synchronization clock, falling back to host time clock polling.", [] {
            return LogMetadata{{"synchronizationClock", "nil"}};
        });
    }
}

Task<> MicrophoneCapture::prepare() {
    startRunning();
    try {
        co_await coordinator_->path->waitForSample(firstSampleTimeout, noAudioError());
    } catch (const ZVCancelled&) {
        throw;
    } catch (...) {
        logger_.error("No samples received from microphone, timed out.", errorMetadata(std::current_exception()));
        throwMicrophoneNoSampleBuffers(microphoneID_, logger_);
        throw;
    }
}

Task<> MicrophoneCapture::finish() {
    co_await coordinator_->path->waitForEnd();
    cancel();
    co_await coordinator_->path->flush();
}

void MicrophoneCapture::cancel() {
    const PoolBlockingScope blocking;
    session_->stopRunning();
}

ZVSoundLevel MicrophoneCapture::soundLevel() const {
    const SoundMeter::Level level = coordinator_->path->level();
    return {"Microphone", microphoneName_, level.peak, level.rms};
}

}  // namespace zorvane
