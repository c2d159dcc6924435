// Records a display, or a rectangle of it, into a movie or streams of segments.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/OutputDescription.hpp"
#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/Internal/Recorders/MediaOutput.hpp"
#include "Zorvane/Internal/Recorders/RecordMode.hpp"
#include "Zorvane/Internal/Recorders/ScreenContentFilter.hpp"
#include "Zorvane/Internal/Recorders/ScreenStreamCoordinator.hpp"
#include "Zorvane/Internal/RecordingInterval.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

namespace zorvane {

/// Everything a screen recorder is made of.
struct ScreenRecorderParameters {
    std::string id;
    OutputDescription outputDescription;
    ResolvedContentFilter content;
    bool captureAudio = false;
    bool showsCursor = true;
    RecordMode mode = RecordMode::sRGB;
    StableRecordingInterval recordingInterval;
    Logger logger;
    AbortHandler onAbort;
    NoticeHandler onNotice = {};
};

/// The heavy work is in construction: the file is created, the encoders are ready and the stream is configured before
/// `prepare`, which only starts the stream and waits for the first samples. What happens to each sample is told by
/// `ScreenStreamCoordinator`. `finish` stops the stream, drains what is buffered and closes the file at `recordUntil`;
/// a recorder destroyed without it leaves its file unfinalised.
class ScreenRecorder final : public Recorder {
  public:
    /// Throws `ZVError` when capturing the screen is not permitted, the output can't be set up or the encoder is
    /// missing, and what the platform throws.
    explicit ScreenRecorder(ScreenRecorderParameters parameters);

    const std::string& id() const override { return id_; }
    Task<> prepare() override;
    Task<> cancel() override;
    Task<std::vector<ZVBundleInfo::FileAsset>> finish() override;
    RecorderStatistics statistics() const override { return coordinator_->statistics(); }

  private:
    struct Inputs {
        std::shared_ptr<AVAssetWriterInput> video;
        std::shared_ptr<AVAssetWriterInput> audio;  // null when no sound is captured
    };

    void setUpWriting(const ScreenRecorderParameters& parameters, int scaleFactor);
    void setUpStream(const ScreenRecorderParameters& parameters, int scaleFactor);
    void addStreamOutputs(const SCStreamConfiguration& configuration);

    const std::string id_;
    const Logger logger_;
    const StableRecordingInterval recordingInterval_;
    const DispatchQueue screenSampleBufferQueue_;
    const DispatchQueue audioSampleBufferQueue_;
    std::optional<MediaOutput> output_;
    Inputs inputs_;
    std::shared_ptr<ScreenStreamCoordinator> coordinator_;
    std::shared_ptr<SCStream> stream_;
};

}  // namespace zorvane
