// A movie of pictures and sound from capture devices: of a camera with a microphone, or of a phone.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "Zorvane/Internal/OutputDescription.hpp"
#include "Zorvane/Internal/RecorderContext.hpp"
#include "Zorvane/Internal/Recorders/DeviceCapture.hpp"
#include "Zorvane/Internal/Recorders/MediaOutput.hpp"
#include "Zorvane/Internal/Recorders/OutputSettings.hpp"

namespace zorvane {

/// A capture and the output that it leads to, which may be made before the capture runs, or while it does, when only
/// its first picture tells how.
class DeviceMovie {
  public:
    /// `recorderName` begins the labels of its queues.
    DeviceMovie(std::string_view recorderName, const Logger& logger, const RecorderContext& context);

    DeviceCapture& capture() { return capture_; }

    /// Sets up the output and connects the capture to it. Logs and throws a `ZVError` (internal error) when the output
    /// takes no such media, and throws what the platform throws. Once. Blocks.
    void open(const OutputDescription& outputDescription, const OutputSettings& settings);

    void cancel() { capture_.cancel(); }

    /// Ends the capture and closes the output at `recordUntil`. Precondition: open.
    Task<std::vector<ZVBundleInfo::FileAsset>> finish(ZVBundleInfo::FileAssetType type);

    RecorderStatistics statistics() const { return capture_.statistics(); }

  private:
    const std::string recorderName_;
    const Logger logger_;
    const RecorderContext context_;
    std::optional<MediaOutput> output_;  // absent until open
    DeviceCapture capture_;
};

}  // namespace zorvane
