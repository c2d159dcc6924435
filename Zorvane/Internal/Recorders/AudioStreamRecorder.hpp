// Hands a microphone's sound to a callback of the host.
#pragma once

#include <string>
#include <vector>

#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/Internal/RecorderContext.hpp"
#include "Zorvane/Internal/Recorders/DeviceCapture.hpp"
#include "Zorvane/ZVSchemaItem.hpp"

namespace zorvane {

/// Writes no file. The host gets the samples of the interval, the three before it, and silence in the place of gaps, in
/// order; what it doesn't take waits, and `finish` waits for it to take the last. It never aborts a recording.
class AudioStreamRecorder final : public Recorder {
  public:
    /// Throws as `AudioFileRecorder` does. Blocks.
    AudioStreamRecorder(std::string id, std::string microphoneID, ZVSchemaItem::SampleCallback callback,
                        const RecorderContext& context);

    const std::string& id() const override { return id_; }
    Task<> prepare() override;
    Task<> cancel() override;
    /// Gives no files.
    Task<std::vector<ZVBundleInfo::FileAsset>> finish() override;
    RecorderStatistics statistics() const override { return capture_.statistics(); }

  private:
    const std::string id_;
    const Logger logger_;
    const std::string microphoneID_;
    DeviceCapture capture_;
};

}  // namespace zorvane
