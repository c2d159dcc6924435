#include "Zorvane/Internal/Recorders/DeviceCapture.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <map>
#include <string_view>
#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/TaskGroup.hpp"
#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/RecorderUserMessages.hpp"
#include "Zorvane/Internal/Recorders/HostTimePlacement.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {
namespace {

constexpr double firstSampleTimeout = 3.0;  // seconds

/// `ending` closes what is thrown, not what is logged.
[[noreturn]] void failToAdd(std::string_view what, std::string_view ending, const Logger& logger) {
    logger.error(fmt::format("Failed to add {} to session.", what));
    throw ZVError::internalError(fmt::format("Can't add {} to session{}", what, ending));
}

std::string_view name(const AVCaptureDataOutput& output) {
    return output.mediaType() == AVMediaType::audio ? "audio" : "video";
}

std::vector<std::shared_ptr<AVCaptureDataOutput>> makeOutputs(DeviceCapture::Media media, const DispatchQueue& queue) {
    std::vector outputs{std::make_shared<AVCaptureDataOutput>(AVMediaType::audio, queue)};
    if (media == DeviceCapture::Media::soundAndPictures) {
        outputs.push_back(std::make_shared<AVCaptureDataOutput>(AVMediaType::video, queue));
        outputs.back()->setPixelFormat(CVPixelFormat::yCbCr420VideoRange);
        outputs.back()->setAlwaysDiscardsLateVideoFrames(true);
    }
    return outputs;
}

using Explain = void (*)(const std::string& id, const Logger& logger);

/// Ends as the wait for the first sample does; why none came is logged and told to the user.
template <class T>
Task<T> explainingSilence(Task<T> wait, std::string_view line, Explain explain, std::string id, Logger logger) {
    try {
        co_return co_await std::move(wait);
    } catch (const ZVCancelled&) {
        throw;
    } catch (...) {
        logger.error(line, errorMetadata(std::current_exception()));
        explain(id, logger);
        throw;
    }
}

/// A device that is there is locked, which the text of the wait itself says best.
void throwIfGone(const std::string& deviceID, const Logger& logger) {
    const PoolBlockingScope blocking;
    if (!Platform::current()->captureDevices->deviceWithUniqueID(deviceID)) {
        throwAppleDeviceNoSampleBuffers(deviceID, logger);
    }
}

}  // namespace

/// Receives the session's samples. It outlives the session's deliveries, and never owns the session.
class DeviceCapture::Coordinator final : public AVCaptureDataOutputSampleBufferDelegate {
  public:
    Coordinator(Media media, const AudioSamplePathTraits& traits, const Logger& logger, const RecorderContext& context)
        : audioPath(context.recordingInterval, logger, traits), logger_(logger), onAbort_(context.onAbort) {
        if (media == Media::soundAndPictures) {
            videoPath.emplace(context.recordingInterval, logger);
        }
    }

    void captureOutput(const AVCaptureDataOutput& output, const CMSampleBuffer& sampleBuffer) override {
        const CMClock* clock = session->synchronizationClock();
        if (output.mediaType() == AVMediaType::audio) {
            audioPath.process(sampleBuffer, clock);
        } else if (videoPath && output.mediaType() == AVMediaType::video) {
            handleVideo(sampleBuffer, hostTimeOf(sampleBuffer, clock));
        } else if (!std::exchange(didLogUnknownOutputWarning_, true)) {
            const std::string_view what = videoPath ? "of unknown type" : "from unknown output";
            logger_.warning(fmt::format("Got data {}, ignoring.", what), [&] {
                return LogMetadata{{"output", output.queue().label()}};
            });
        }
    }

    AudioSamplePath audioPath;
    std::optional<VideoSamplePath> videoPath;   // absent for sound alone
    const AVCaptureSession* session = nullptr;  // set before it runs

  private:
    void handleVideo(const CMSampleBuffer& sampleBuffer, CMTime hostTime) {
        try {
            videoPath->process(sampleBuffer, hostTime);
        } catch (...) {
            const std::exception_ptr error = std::current_exception();
            logger_.error("Failed to append video frame, aborting.", [&] {
                return LogMetadata{{"error", debugDescription(error)},
                                   {"pts", sampleBuffer.presentationTimeStamp().logDescription()},
                                   {"hostTimeClockPTS", hostTime.logDescription()}};
            });
            onAbort_(AbortSignal::interrupted(error));
        }
    }

    const Logger logger_;
    const AbortHandler onAbort_;
    bool didLogUnknownOutputWarning_ = false;  // of the sample queue
};

DeviceCapture::DeviceCapture(Media media, const AudioSamplePathTraits& traits, DispatchQueue sampleBufferQueue,
                             const Logger& logger, const RecorderContext& context)
    : logger_(logger),
      onNotice_(context.onNotice),
      outputs_(makeOutputs(media, sampleBufferQueue)),
      coordinator_(std::make_shared<Coordinator>(media, traits, logger_, context)) {
    for (const auto& output : outputs_) {
        output->setSampleBufferDelegate(coordinator_);
    }
}

DeviceCapture::~DeviceCapture() = default;

void DeviceCapture::connect(std::unique_ptr<AudioSampleSink> sink) {
    outputs_.front()->queue().sync([&] { coordinator_->audioPath.connect(std::move(sink)); });
}

void DeviceCapture::connect(const MediaOutput& output, const std::shared_ptr<AVAssetWriterInput>& audioInput,
                            const std::shared_ptr<AVAssetWriterInput>& videoInput) {
    outputs_.front()->queue().sync([&] {
        coordinator_->audioPath.connect(output.makeSink(audioInput));
        coordinator_->videoPath->connect(output, videoInput);
    });
}

void DeviceCapture::configure(const std::vector<CaptureDevice>& devices) {
    const PoolBlockingScope blocking;
    logger_.trace("Configuring AVCaptureSession.");
    addInputs(devices);
    addOutputs(devices.front().role.refusalEnding);
    logger_.debug("Configured AVCaptureSession", [&] {
        std::vector<std::string> inputs;
        for (const CaptureDevice& device : devices) {
            inputs.push_back(device.device->localizedName());
        }
        const std::string_view media = coordinator_->videoPath ? "audio, video" : "audio";
        return LogMetadata{{"inputs", fmt::format("{}", fmt::join(inputs, ", "))},
                           {"outputs", std::string(media)},
                           {"connections", std::string(media)}};
    });
    noteSoundSource(devices.front());
    observeInterruptions(devices);
}

void DeviceCapture::addInputs(const std::vector<CaptureDevice>& devices) {
    std::vector<AVCaptureDeviceInput> inputs;
    for (const CaptureDevice& device : devices) {
        inputs.push_back(openCaptureDevice(device, logger_));
    }
    session_ = Platform::current()->captureDevices->makeCaptureSession();
    coordinator_->session = session_.get();
    for (std::size_t index = 0; index < devices.size(); ++index) {
        if (!session_->canAddInput(inputs[index])) {
            failToAdd(devices[index].role.inputName, devices[index].role.refusalEnding, logger_);
        }
    }
    for (AVCaptureDeviceInput& input : inputs) {
        session_->addInput(std::move(input));
    }
}

void DeviceCapture::addOutputs(std::string_view refusalEnding) {
    for (const auto& output : outputs_) {
        if (!session_->canAddOutput(*output)) {
            failToAdd(fmt::format("{}Output", name(*output)), refusalEnding, logger_);
        }
    }
    for (const auto& output : outputs_) {
        session_->addOutput(output);
    }
    for (const auto& output : outputs_) {
        if (!session_->hasEnabledConnection(output->mediaType())) {
            const std::string message = fmt::format("Can't find enabled {} connection.", name(*output));
            logger_.error(message);
            throw ZVError::internalError(message);
        }
    }
}

void DeviceCapture::noteSoundSource(const CaptureDevice& device) {
    const MutexLock lock(mutex_);
    soundSource_.emplace();
    soundSource_->source = device.role.soundSource;
    soundSource_->name = device.device->localizedName();
}

void DeviceCapture::observeInterruptions(const std::vector<CaptureDevice>& devices) {
    std::map<AVMediaType, SourceNotices> sources;
    for (const CaptureDevice& device : devices) {
        const AVMediaType media = device.role.mediaType;
        sources.emplace(media, SourceNotices(device.device->localizedName(), media, onNotice_, logger_));
    }
    interruptions_ = session_->observeInterruptions(
        [sources = std::move(sources)](AVMediaType input, const std::exception_ptr& reason) {
            const auto source = sources.find(input);
            if (source == sources.end()) {
                return;
            }
            if (reason) {
                source->second.interrupted(reason);
            } else {
                source->second.resumed();
            }
        });
}

void DeviceCapture::startRunning() {
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

Task<> DeviceCapture::waitForMicrophone(std::string microphoneID) const {
    ZVError error = ZVError::internalError("No audio samples received from microphone.",
                                           "No audio from microphone, make sure it's unmuted and powered on.");
    return explainingSilence(coordinator_->audioPath.waitForSample(firstSampleTimeout, std::move(error)),
                             "No samples received from microphone, timed out.", throwMicrophoneNoSampleBuffers,
                             std::move(microphoneID), logger_);
}

Task<CMSampleBuffer> DeviceCapture::waitForCamera(std::string cameraID) const {
    ZVError error =
        ZVError::internalError("No video samples received from camera.",
                               "No video from camera, make sure it's powered on and any privacy shutter is open.");
    return explainingSilence(coordinator_->videoPath->waitForSample(firstSampleTimeout, std::move(error)),
                             "No samples received from camera, timed out.", throwCameraNoSampleBuffers,
                             std::move(cameraID), logger_);
}

Task<CMSampleBuffer> DeviceCapture::waitForPhone(std::string deviceID) const {
    ZVError error = ZVError::internalError("Timeout waiting for first sample from Apple Device.",
                                           "No video data from Apple Device. Make sure device is unlocked.");
    return explainingSilence(coordinator_->videoPath->waitForSample(firstSampleTimeout, std::move(error)),
                             "No samples received from Apple device, timed out.", throwIfGone, std::move(deviceID),
                             logger_);
}

Task<> DeviceCapture::waitForEnd() const {
    TaskGroup<> group(co_await currentStopToken());
    group.add(coordinator_->audioPath.waitForEnd());
    if (coordinator_->videoPath) {
        group.add(coordinator_->videoPath->waitForEnd());
    }
    co_await std::move(group).results();
}

Task<> DeviceCapture::finish() {
    co_await waitForEnd();
    cancel();
    if (coordinator_->videoPath) {
        coordinator_->videoPath->finish();
    }
    co_await coordinator_->audioPath.flush();
}

void DeviceCapture::cancel() {
    const PoolBlockingScope blocking;
    if (session_) {
        session_->stopRunning();
    }
    if (coordinator_->videoPath) {
        coordinator_->videoPath->letGoOfPictures();
    }
}

RecorderStatistics DeviceCapture::statistics() const {
    RecorderStatistics statistics;
    if (coordinator_->videoPath) {
        coordinator_->videoPath->addTo(statistics);
    }
    const MutexLock lock(mutex_);
    if (soundSource_) {
        const SoundMeter::Level level = coordinator_->audioPath.level();
        statistics.soundLevels.push_back({soundSource_->source, soundSource_->name, level.peak, level.rms});
    }
    return statistics;
}

}  // namespace zorvane
