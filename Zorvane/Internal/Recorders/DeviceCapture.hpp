// The capture of a microphone, of a camera with one, or of a phone, the same for all recorders of such.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/RecorderContext.hpp"
#include "Zorvane/Internal/Recorders/AudioSamplePath.hpp"
#include "Zorvane/Internal/Recorders/CaptureDeviceRole.hpp"
#include "Zorvane/Internal/Recorders/VideoSamplePath.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureSession.hpp"

namespace zorvane {

/// A capture session whose samples go down an `AudioSamplePath` and a `VideoSamplePath`. A device that is unplugged
/// while it runs is waited for: the recording goes on with silence and the last picture in the place, and the host is
/// told.
///
///     made -> configured -> running -> ended by `finish` or `cancel`
///
/// Its paths may be connected at any time before the recording starts. It may be destroyed at any time, which ends the
/// capture. The operations come one at a time, `statistics` at any time and on any thread.
class DeviceCapture {
  public:
    enum class Media { sound, soundAndPictures };

    /// Opens no device yet. A picture that can't be handed on ends the recording.
    DeviceCapture(Media media, const AudioSamplePathTraits& traits, DispatchQueue sampleBufferQueue,
                  const Logger& logger, const RecorderContext& context);
    ~DeviceCapture();
    DeviceCapture(const DeviceCapture&) = delete;
    DeviceCapture& operator=(const DeviceCapture&) = delete;

    /// Leads the samples to a sink, or to both inputs of an output, from the next sample on.
    void connect(std::unique_ptr<AudioSampleSink> sink);
    void connect(const MediaOutput& output, const std::shared_ptr<AVAssetWriterInput>& audioInput,
                 const std::shared_ptr<AVAssetWriterInput>& videoInput);

    /// Opens the devices, which give the capture's media between them. Logs and throws a `ZVError` when one of them or
    /// its samples can't be had. Blocks.
    void configure(const std::vector<CaptureDevice>& devices);

    /// Blocks.
    void startRunning();

    // Each ends with the first sample, and gives it if it is a picture. Logs and throws a `ZVError` (internal error)
    // with a text for the user after 3 seconds without one.
    Task<> waitForMicrophone(std::string microphoneID) const;
    Task<CMSampleBuffer> waitForCamera(std::string cameraID) const;
    Task<CMSampleBuffer> waitForPhone(std::string deviceID) const;

    /// Ends the capture as soon as the samples up to `recordUntil` have come, closes the pictures' track and hands on
    /// all sound that is held. Precondition: connected.
    Task<> finish();

    void cancel();

    RecorderStatistics statistics() const;

  private:
    class Coordinator;

    void addInputs(const std::vector<CaptureDevice>& devices);
    void addOutputs(std::string_view refusalEnding);
    void noteSoundSource(const CaptureDevice& device);
    void observeInterruptions(const std::vector<CaptureDevice>& devices);
    Task<> waitForEnd() const;

    const Logger logger_;
    const NoticeHandler onNotice_;
    const std::vector<std::shared_ptr<AVCaptureDataOutput>> outputs_;  // of sound, then of pictures
    // The session goes first, with no sample under way. Whoever delivers one may hold the coordinator a little longer.
    const std::shared_ptr<Coordinator> coordinator_;
    std::shared_ptr<AVCaptureSession> session_;  // null until configured
    NSKeyValueObservation interruptions_;
    mutable Mutex mutex_;
    std::optional<ZVSoundLevel> soundSource_ ZV_GUARDED_BY(mutex_);  // names only; absent until configured
};

}  // namespace zorvane
