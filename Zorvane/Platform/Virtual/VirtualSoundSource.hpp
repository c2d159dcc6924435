// The sound of one virtual stream, block by block.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/CoreMedia/CMSampleBuffer.hpp"
#include "Zorvane/Platform/Virtual/VirtualDesktop.hpp"

namespace zorvane {

/// Delivers each block of the desktop's sound when it has been heard to its end, stamped with its begin. Silence is
/// delivered like any sound. All work is done on a strand of its own. Any thread may call; nothing blocks.
class VirtualSoundSource final : public std::enable_shared_from_this<VirtualSoundSource> {
  public:
    using Deliver = std::function<void(const CMSampleBuffer& sample)>;

    /// `audible` is whose sound it is; rate and channels are the configuration's.
    VirtualSoundSource(std::shared_ptr<VirtualDesktop> desktop, SCAudibleProcesses audible,
                       const SCStreamConfiguration& configuration, Deliver deliver);

    /// The first block is the next to begin. `stampOffset` is what is taken from the host time to get a stamp.
    void start(std::chrono::nanoseconds stampOffset);
    void stop();

    const std::shared_ptr<Executor>& strand() const { return strand_; }

  private:
    void post(std::function<void(VirtualSoundSource&)> job);

    // On the strand:
    void waitForBlock();
    void deliverBlock();
    CMTime stampOf(std::chrono::nanoseconds time) const;
    std::chrono::nanoseconds begin(std::int64_t block) const {
        return desktop_->origin() + block * VirtualSound::blockDuration;
    }

    const std::shared_ptr<VirtualDesktop> desktop_;
    const SCAudibleProcesses audible_;
    const Deliver deliver_;
    const std::shared_ptr<const CMFormatDescription> format_;
    const std::shared_ptr<Executor> strand_;

    // Of the strand:
    std::chrono::nanoseconds stampOffset_{0};
    std::int64_t block_ = 0;  // the number of the next block since the desktop's origin
    std::optional<HostClock::TimerID> timer_;
    bool running_ = false;
};

}  // namespace zorvane
