// The capture of one microphone, the same for all recorders that listen to one.
#pragma once

#include <memory>
#include <string>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/Recorders/AudioSamplePath.hpp"
#include "Zorvane/Internal/SourceNotices.hpp"
#include "Zorvane/Platform/AVFoundation/AVCaptureSession.hpp"
#include "Zorvane/ZVSoundLevel.hpp"

namespace zorvane {

/// The connected microphone with this id. Logs and throws a `ZVError` when the process may not listen to microphones
/// (bad operation) or there is none with this id (internal error, where possible with a text for the user). Blocks.
std::shared_ptr<AVCaptureDevice> requireMicrophone(const std::string& microphoneID, const Logger& logger);

/// A capture session with one microphone, whose samples go down an `AudioSamplePath`. A microphone that is unplugged
/// while it runs is waited for: the recording goes on with silence in the place, and the host is told.
///
/// Made, prepared, and ended by `finish` or `cancel`; or destroyed at any time, which ends the capture.
class MicrophoneCapture {
  public:
    /// Opens the device. Throws a `ZVError` (internal error) when it or its sound can't be had. Blocks.
    MicrophoneCapture(const std::shared_ptr<AVCaptureDevice>& device, DispatchQueue sampleBufferQueue,
                      std::unique_ptr<AudioSamplePath> path, const Logger& logger, NoticeHandler onNotice);
    ~MicrophoneCapture();
    MicrophoneCapture(const MicrophoneCapture&) = delete;
    MicrophoneCapture& operator=(const MicrophoneCapture&) = delete;

    /// Starts to capture, and ends when samples come. Throws a `ZVError` (internal error) with a text for the user
    /// after 3 seconds without one.
    Task<> prepare();

    /// Ends the capture as soon as the sound up to `recordUntil` has come, and hands on all that is held.
    Task<> finish();

    void cancel();

    ZVSoundLevel soundLevel() const;

  private:
    class Coordinator;

    void setUp(const std::shared_ptr<AVCaptureDevice>& device);
    void observeInterruptions(NoticeHandler onNotice);
    void startRunning();

    const Logger logger_;
    const std::string microphoneID_;
    const std::string microphoneName_;
    const std::shared_ptr<AVCaptureDataOutput> audioOutput_;
    // The session goes first, with no sample under way. Whoever delivers one may hold the coordinator a little longer.
    std::shared_ptr<Coordinator> coordinator_;
    std::shared_ptr<AVCaptureSession> session_;
    NSKeyValueObservation interruptions_;
};

}  // namespace zorvane
