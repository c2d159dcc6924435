// Collects what a screen stream delivers.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

namespace zorvane {

/// One delivered sample, with the few pixels that a test asked to note.
struct ScreenSample {
    SCFrameStatus status;
    double seconds;
    CVPixelLayout layout;
    std::vector<std::uint32_t> pixels;
};

/// Receives the samples and the end of one stream. The waits give up after 10 s, which only a fault takes.
class ScreenSamples final : public SCStreamOutput, public SCStreamDelegate {
  public:
    struct Point {
        std::int32_t x;
        std::int32_t y;
    };

    /// Notes the pixels at `points` of every picture, and lets pictures go at once.
    explicit ScreenSamples(std::vector<Point> points = {}) : points_(std::move(points)) {}

    /// Waits for a sample that fits; the first such one since the last call to `forget`. Throws if none comes.
    ScreenSample waitFor(const std::function<bool(const ScreenSample&)>& fits);
    /// A picture whose noted pixel `index` has this value.
    ScreenSample waitForPixel(std::uint32_t value, std::size_t index = 0);
    ScreenSample waitForStatus(SCFrameStatus status);
    std::exception_ptr waitForEnd();

    void forget();
    std::vector<ScreenSample> all() const;
    std::size_t count(SCFrameStatus status) const;

    /// From now on keeps up to so many pictures in use.
    void hold(std::size_t pictures);
    void letGo();
    /// The last picture that was kept.
    CVPixelBufferRef held() const;

    void stream(SCStream& stream, const CMSampleBuffer& sampleBuffer, SCStreamOutputType type) override;
    void streamDidStopWithError(SCStream& stream, std::exception_ptr error) override;

  private:
    const std::vector<Point> points_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<ScreenSample> samples_;  // this and all below guarded by mutex_
    std::size_t mayHold_ = 0;
    std::vector<CVPixelBufferRef> held_;
    std::optional<std::exception_ptr> end_;
};

/// The pixel's value, without the bits that mean nothing.
std::uint32_t pixelAt(const CVPixelBuffer& picture, std::int32_t x, std::int32_t y);

}  // namespace zorvane
