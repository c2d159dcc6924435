// Decides for each sample of a screen stream whether it is dropped, held, repeated or written.
#pragma once

#include <atomic>
#include <memory>
#include <optional>

#include "Zorvane/Internal/FrameRepeater.hpp"
#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/Internal/Recorders/AudioSamplePath.hpp"
#include "Zorvane/Internal/Recorders/MediaOutput.hpp"
#include "Zorvane/Internal/Recorders/StreamCapture.hpp"
#include "Zorvane/Internal/Recorders/VideoSamplePath.hpp"
#include "Zorvane/Internal/RecordingInterval.hpp"
#include "Zorvane/Internal/SourceNotices.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

namespace zorvane {

/// The delegate and the sample receiver of a screen recorder's stream. The way of a picture: held for `prepare`, the
/// frame repeater (which repeats it when the screen stands still), then on along the `VideoSamplePath`. The way of
/// sound: `AudioSamplePath`.
///
/// Pictures and sound arrive on two queues at once; repeats come on the pool. Shared by its owner and the stream's
/// callbacks, which hold it weakly.
class ScreenStreamCoordinator final : public SCStreamOutput,
                                      public SCStreamDelegate,
                                      public std::enable_shared_from_this<ScreenStreamCoordinator> {
  public:
    /// `audioInput` is null when no sound is captured.
    static std::shared_ptr<ScreenStreamCoordinator> make(const Logger& logger, const StableRecordingInterval& interval,
                                                         const MediaOutput& output,
                                                         std::shared_ptr<AVAssetWriterInput> videoInput,
                                                         std::shared_ptr<AVAssetWriterInput> audioInput,
                                                         SourceNotices audioNotices, StopErrorHandler stopErrorHandler);

    /// Ends when the first complete picture has come and, if sound is captured, then the first sound. Throws `ZVError`
    /// with a text for the user after 3 seconds without one of them.
    Task<> waitForSampleBuffers();

    void stream(SCStream& stream, const CMSampleBuffer& sampleBuffer, SCStreamOutputType type) override;
    void streamDidStopWithError(SCStream& stream, std::exception_ptr error) override;
    void streamDidBecomeInactive(SCStream& stream, std::exception_ptr reason) override;
    void streamDidBecomeActive(SCStream& stream) override;

    /// Stops repeating; the stream's next picture starts it again.
    void cancelRepeats();

    /// After the stream has stopped: cancels the repeats that its last pictures have set off, and gives back the
    /// picture that is held, with which the whole pool would stay in memory.
    void letGoOfPictures();

    /// Closes the picture track at `recordUntil`. Once, after the stream has stopped. Throws the retimer's errors.
    void finishVideo();

    /// Waits for the sound up to `recordUntil`; see `AudioSamplePath::waitForEnd`. Does nothing without sound.
    Task<> waitForAudioEnd();

    /// Hands all sound to the writer; see `AudioSamplePath::flush`. Without sound there is nothing to hand over.
    Task<> flushAudio();

    RecorderStatistics statistics() const;

  private:
    ScreenStreamCoordinator(const Logger& logger, const StableRecordingInterval& interval, SourceNotices audioNotices,
                            StopErrorHandler stopErrorHandler);
    void connect(const MediaOutput& output, std::shared_ptr<AVAssetWriterInput> videoInput,
                 std::shared_ptr<AVAssetWriterInput> audioInput);
    void handleVideo(const CMSampleBuffer& sampleBuffer, CMTime hostTime);
    void ignoreUnknownType(SCStreamOutputType type);
    void frameRepeaterHandler(const CMSampleBuffer& sampleBuffer, CMTime time, std::optional<CMTime> repeatAddedTime);

    const Logger logger_;
    const StableRecordingInterval interval_;  // copied and refreshed where it is read
    const SourceNotices audioNotices_;
    const StopErrorHandler stopErrorHandler_;
    VideoSamplePath videoPath_;
    std::unique_ptr<AudioSamplePath> audioPath_;  // null when no sound is captured
    FrameRepeater<CMSampleBuffer> frameRepeater_;
    std::atomic<bool> didLogUnknownOutputWarning_{false};
    std::atomic<std::uint64_t> framesRepeated_{0};  // counted where it happens, read by anyone
};

}  // namespace zorvane
