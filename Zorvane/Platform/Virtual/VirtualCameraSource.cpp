#include "Zorvane/Platform/Virtual/VirtualCameraSource.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zorvane {
namespace {

using std::chrono::nanoseconds;

constexpr std::size_t picturesOut = 4;

double secondsOf(nanoseconds time) {
    return std::chrono::duration<double>(time).count();
}

CVPixelLayout layoutOf(const CMVideoDimensions& size) {
    constexpr std::size_t rowAlignment = 64;
    const std::size_t row = (static_cast<std::size_t>(size.width) + rowAlignment - 1) / rowAlignment * rowAlignment;
    return {
        .width = size.width, .height = size.height, .bytesPerRow = row, .format = CVPixelFormat::yCbCr420VideoRange};
}

}  // namespace

VirtualCameraSource::VirtualCameraSource(std::shared_ptr<VirtualCaptureDevices> devices, std::string deviceID,
                                         Receiver receiver, LatePictures latePictures)
    : VirtualDeviceSource(std::move(devices), std::move(deviceID), std::move(receiver)), latePictures_(latePictures) {}

void VirtualCameraSource::begin() {
    const VirtualCamera camera = devices()->camera(deviceID());
    taken_ = camera.pictureAfter(secondsOf(clock().now() - devices()->origin()));
    waitForPicture(camera);
}

void VirtualCameraSource::waitForPicture(const VirtualCamera& camera) {
    wakeAt(hostTime(taken_) + camera.latency + camera.jitter * (scatter() % 1000) / 1000);
}

void VirtualCameraSource::wake() {
    const VirtualCamera camera = devices()->camera(deviceID());
    if (notePresence() && !camera.isCovered && hostTime(taken_) >= camera.lostUntil) {
        handOver(camera);
    }
    double last = taken_;
    if (latePictures_ == LatePictures::dropped) {
        const double newest = secondsOf(clock().now() - camera.latency - devices()->origin());
        last = std::max(last, newest - 1 / camera.trueRate());
    }
    taken_ = camera.pictureAfter(last);
    waitForPicture(camera);
}

void VirtualCameraSource::handOver(const VirtualCamera& camera) {
    CVPixelBufferRef picture = takePicture(camera.size);
    if (!picture) {
        return;
    }
    const nanoseconds time = hostTime(taken_);
    VirtualCamera::draw(taken_, time >= camera.flashFrom && time < camera.flashUntil, *picture);
    const nanoseconds noise = camera.jitter * (static_cast<std::int64_t>(scatter() % 2000) - 1000) / 2000;
    const CMSampleTimingInfo timing{.presentationTimeStamp = CMTime::make((time + noise).count(), 1'000'000'000)};
    deliver(CMSampleBuffer::video(std::move(picture), timing, {}, camera.describesPictures ? format_ : nullptr));
}

CVPixelBufferRef VirtualCameraSource::takePicture(const CMVideoDimensions& size) {
    const CVPixelLayout layout = layoutOf(size);
    if (!pool_ || pool_->layout() != layout) {
        pool_ = CVPixelBufferPool::make(layout, picturesOut);
        format_ = std::make_shared<const CMFormatDescription>(CMFormatDescription{.dimensions = size});
    }
    return pool_->take();
}

nanoseconds VirtualCameraSource::hostTime(double time) const {
    return devices()->origin() + nanoseconds(std::llround(time * 1e9));
}

}  // namespace zorvane
