// The sound of one virtual microphone in one session, block by block.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Zorvane/Platform/CoreAudio/SoundAligner.hpp"
#include "Zorvane/Platform/Virtual/VirtualDeviceSource.hpp"
#include "Zorvane/Platform/Virtual/VirtualMicrophone.hpp"

namespace zorvane {

/// Counts frames by the device's own clock, in blocks of 10 ms, and brings them onto the host clock as a real backend
/// does, through a `SoundAligner`. What leaves it has the format that the microphone had at the start.
class VirtualMicrophoneSource final : public VirtualDeviceSource {
  public:
    VirtualMicrophoneSource(std::shared_ptr<VirtualCaptureDevices> devices, std::string deviceID, Receiver receiver);

  private:
    void begin() override;
    void wake() override;
    void lost() override;

    void listenTo(const AVAudioFormat& format);
    void waitForBlock();
    void handOver(const VirtualMicrophone& microphone);
    double blockDuration(const VirtualMicrophone& microphone) const;

    const AVAudioFormat outputFormat_;
    const std::shared_ptr<AVAudioConverting> converting_;

    // Of the strand:
    AVAudioFormat sourceFormat_;
    std::unique_ptr<SoundAligner> aligner_;
    std::vector<std::byte> block_;
    std::int64_t position_ = 0;  // of the present block's first frame, in the device's count
    double begin_ = 0;           // of the present block, in seconds on the host clock
};

}  // namespace zorvane
