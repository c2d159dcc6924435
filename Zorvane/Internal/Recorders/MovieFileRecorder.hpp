// Records a camera and a microphone into one movie or streams of segments.
#pragma once

#include <string>
#include <vector>

#include "Zorvane/Internal/OutputDescription.hpp"
#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/Internal/RecorderContext.hpp"
#include "Zorvane/Internal/Recorders/DeviceMovie.hpp"

namespace zorvane {

/// Construction opens the devices and the output; `prepare` starts to capture and waits for the first sound, then for
/// the first picture. The movie begins exactly at `recordFrom` with the picture of that moment, and ends at
/// `recordUntil`; the last picture lasts while the camera gives none, and there is silence while the microphone gives
/// none.
class MovieFileRecorder final : public Recorder {
  public:
    /// Throws `ZVError` when capturing is not permitted, a device isn't there or refuses, or the output can't be set
    /// up, and what the platform throws. Blocks.
    MovieFileRecorder(std::string id, const OutputDescription& outputDescription, std::string microphoneID,
                      std::string cameraID, const RecorderContext& context);

    const std::string& id() const override { return id_; }
    Task<> prepare() override;
    Task<> cancel() override;
    Task<std::vector<ZVBundleInfo::FileAsset>> finish() override;
    RecorderStatistics statistics() const override { return movie_.statistics(); }

  private:
    void logInitialized(const AVCaptureDevice& microphone, const AVCaptureDevice& camera,
                        const OutputSettings& settings) const;

    const std::string id_;
    const Logger logger_;
    const std::string microphoneID_;
    const std::string cameraID_;
    DeviceMovie movie_;
};

}  // namespace zorvane
