// Records a microphone to a file of sound, or to segments.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Internal/OutputDescription.hpp"
#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/Internal/RecorderContext.hpp"
#include "Zorvane/Internal/Recorders/DeviceCapture.hpp"
#include "Zorvane/Internal/Recorders/MediaOutput.hpp"

namespace zorvane {

/// Construction opens the device and the file; `prepare` starts to capture and waits for the first sample. The file
/// begins exactly at `recordFrom` and ends at `recordUntil`, with silence where the microphone gave nothing; more than
/// two channels are mixed down to two.
class AudioFileRecorder final : public Recorder {
  public:
    /// Throws `ZVError` when listening is not permitted, there is no such microphone or the output can't be set up, and
    /// what the platform throws. Blocks.
    AudioFileRecorder(std::string id, const OutputDescription& outputDescription, std::string microphoneID,
                      const RecorderContext& context);

    const std::string& id() const override { return id_; }
    Task<> prepare() override;
    Task<> cancel() override;
    Task<std::vector<ZVBundleInfo::FileAsset>> finish() override;
    RecorderStatistics statistics() const override { return capture_.statistics(); }

  private:
    const std::string id_;
    const Logger logger_;
    const StableRecordingInterval recordingInterval_;
    const std::string microphoneID_;
    std::optional<MediaOutput> output_;
    DeviceCapture capture_;
};

}  // namespace zorvane
