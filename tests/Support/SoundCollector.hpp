// A receiver of captured sound that notes what comes, and that a test can wait on.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVCaptureSession.hpp"

namespace zorvane {

class SoundCollector final : public AVCaptureDataOutputSampleBufferDelegate {
  public:
    using Samples = std::vector<CMSampleBuffer>;

    void captureOutput(const AVCaptureDataOutput& output, const CMSampleBuffer& sampleBuffer) override;
    void add(const CMSampleBuffer& sampleBuffer);

    Samples samples() const;
    std::size_t count() const;

    /// Waits until so many frames came in all. False if they don't within half a minute.
    bool waitForFrames(std::size_t frames) const;
    /// Waits until so many frames came after this call.
    bool waitForMoreFrames(std::size_t frames) const;

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    Samples samples_;
    std::size_t frames_ = 0;
};

/// How many frames each block begins later than where the last one ended, where it does.
std::vector<std::int64_t> breaksIn(const SoundCollector::Samples& samples);

/// Calls `visit` with each frame's time in seconds and its samples, one per channel.
void forEachFrame(const SoundCollector::Samples& samples,
                  const std::function<void(double time, const float* channels)>& visit);

/// The share of the frames for which `condition` holds. On an overloaded machine PipeWire's programs miss their turns:
/// then a cycle's sound is torn, missing, or with the time of the next cycle. So what holds for every frame in
/// principle is asked of most.
double shareOfFrames(const SoundCollector::Samples& samples,
                     const std::function<bool(double time, const float* channels)>& condition);

}  // namespace zorvane
