// Records the screen and the sound of a connected phone or tablet into one movie or streams of segments.
#pragma once

#include <string>
#include <vector>

#include "Zorvane/Internal/OutputDescription.hpp"
#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/Internal/RecorderContext.hpp"
#include "Zorvane/Internal/Recorders/DeviceMovie.hpp"

namespace zorvane {

/// What the movie is like depends on the first picture, so that all of the set-up is in `prepare`: it starts to
/// capture, waits for a picture, and opens an output of that picture's size, which keeps its size however the device is
/// turned later. From there on it is like `MovieFileRecorder`. Sound isn't waited for.
class DeviceRecorder final : public Recorder {
  public:
    /// Throws `ZVError` when capturing is not permitted.
    DeviceRecorder(std::string id, OutputDescription outputDescription, std::string deviceID,
                   const RecorderContext& context);

    const std::string& id() const override { return id_; }
    Task<> prepare() override;
    Task<> cancel() override;
    Task<std::vector<ZVBundleInfo::FileAsset>> finish() override;
    RecorderStatistics statistics() const override { return movie_.statistics(); }

  private:
    CaptureDevice startCapture();
    void openMovie(const AVCaptureDevice& device, const CMSampleBuffer& firstPicture);

    const std::string id_;
    const OutputDescription outputDescription_;
    const std::string deviceID_;
    const Logger logger_;
    DeviceMovie movie_;
};

}  // namespace zorvane
