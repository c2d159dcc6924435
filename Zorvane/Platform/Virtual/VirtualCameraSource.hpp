// The pictures of one virtual camera in one session.
#pragma once

#include <memory>
#include <string>

#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"
#include "Zorvane/Platform/Virtual/VirtualCamera.hpp"
#include "Zorvane/Platform/Virtual/VirtualDeviceSource.hpp"

namespace zorvane {

/// Delivers each picture when the camera has it, stamped with the time at which it was taken. Four pictures may be out
/// at a time; while they are, new ones get lost.
class VirtualCameraSource final : public VirtualDeviceSource {
  public:
    /// What happens to pictures that are due while the receiver is busy with an earlier one.
    enum class LatePictures : std::uint8_t { dropped, delivered };

    VirtualCameraSource(std::shared_ptr<VirtualCaptureDevices> devices, std::string deviceID, Receiver receiver,
                        LatePictures latePictures);

  private:
    void begin() override;
    void wake() override;

    void waitForPicture(const VirtualCamera& camera);
    void handOver(const VirtualCamera& camera);
    /// A free picture of the camera's present size; empty while none is free.
    CVPixelBufferRef takePicture(const CMVideoDimensions& size);
    std::chrono::nanoseconds hostTime(double time) const;

    const LatePictures latePictures_;

    // Of the strand:
    double taken_ = 0;  // when the next picture to deliver is taken, in seconds since the desktop was made
    std::shared_ptr<CVPixelBufferPool> pool_;
    std::shared_ptr<const CMFormatDescription> format_;  // of the pool's pictures
};

}  // namespace zorvane
