// A receiver of captured pictures that notes what comes, and that a test can wait on.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVCaptureSession.hpp"

namespace zorvane {

/// Keeps what a picture is like, and gives the picture back at once.
class PictureCollector final : public AVCaptureDataOutputSampleBufferDelegate {
  public:
    struct Seen {
        std::int64_t time = 0;  ///< nanoseconds of the host clock
        CVPixelLayout layout;
        CMVideoDimensions described;  ///< by the sample's format
        std::int64_t value = 0;       ///< what `look` has found in it
    };

    /// `look` reads something out of each picture.
    explicit PictureCollector(std::function<std::int64_t(const CVPixelBuffer& picture)> look)
        : look_(std::move(look)) {}

    void captureOutput(const AVCaptureDataOutput& output, const CMSampleBuffer& sampleBuffer) override;

    std::vector<Seen> pictures() const;
    std::size_t count() const;

    /// Waits until `condition` holds for all that came. False if it doesn't within half a minute.
    bool waitFor(const std::function<bool(const std::vector<Seen>& pictures)>& condition) const;
    bool waitForPictures(std::size_t count) const;
    /// Waits until so many came after this call.
    bool waitForMorePictures(std::size_t count) const;

  private:
    const std::function<std::int64_t(const CVPixelBuffer&)> look_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<Seen> pictures_;
};

}  // namespace zorvane
