// The sound of one virtual microphone in one session, block by block.
#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/CoreAudio/SoundAligner.hpp"
#include "Zorvane/Platform/Foundation/HostClock.hpp"
#include "Zorvane/Platform/Virtual/VirtualCaptureDevices.hpp"

namespace zorvane {

/// Counts frames by the device's own clock, in blocks of 10 ms, and brings them onto the host clock as a real backend
/// does, through a `SoundAligner`. What leaves it has the format that the microphone had at the start.
///
/// A device that is unplugged gives nothing until it is back, and says so. All work is done on a strand of its own. Any
/// thread may call; nothing blocks.
class VirtualMicrophoneSource final : public std::enable_shared_from_this<VirtualMicrophoneSource> {
  public:
    /// Both are called on the strand. The reason is null when the device is back.
    struct Receiver {
        std::function<void(const CMSampleBuffer& sample)> deliver;
        std::function<void(std::exception_ptr reason)> interrupt;
    };

    VirtualMicrophoneSource(std::shared_ptr<VirtualCaptureDevices> devices, std::string deviceID, Receiver receiver);
    ~VirtualMicrophoneSource();

    void start();
    void stop();

  private:
    void post(std::function<void(VirtualMicrophoneSource&)> job);

    // On the strand:
    void listenTo(const AVAudioFormat& format);
    void waitForBlock();
    void endBlock();
    void handOver(const VirtualMicrophone& microphone);
    void notePresence(bool isPresent);
    double blockDuration(const VirtualMicrophone& microphone) const;
    std::uint32_t scatter();

    const std::shared_ptr<VirtualCaptureDevices> devices_;
    const std::string deviceID_;
    const Receiver receiver_;
    const AVAudioFormat outputFormat_;
    const std::shared_ptr<HostClock> clock_;
    const std::shared_ptr<AVAudioConverting> converting_;
    const std::shared_ptr<Executor> strand_;

    // Of the strand:
    AVAudioFormat sourceFormat_;
    std::unique_ptr<SoundAligner> aligner_;
    std::vector<std::byte> block_;
    std::int64_t position_ = 0;  // of the present block's first frame, in the device's count
    double begin_ = 0;           // of the present block, in seconds on the host clock
    std::uint32_t random_ = 1;
    bool isPresent_ = true;
    bool running_ = false;
    std::optional<HostClock::TimerID> timer_;
};

}  // namespace zorvane
