#include "tests/Support/ScreenSamples.hpp"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace zorvane {
namespace {

constexpr auto patience = std::chrono::seconds(10);

}  // namespace

std::uint32_t pixelAt(const CVPixelBuffer& picture, std::int32_t x, std::int32_t y) {
    std::uint32_t pixel;
    std::memcpy(
        &pixel,
        picture.bytes() + static_cast<std::size_t>(y) * picture.layout().bytesPerRow + 4 * static_cast<std::size_t>(x),
        sizeof pixel);
    return pixel & (picture.layout().format == CVPixelFormat::bgra ? 0xFFFFFFU : 0x3FFFFFFFU);
}

ScreenSample ScreenSamples::waitFor(const std::function<bool(const ScreenSample&)>& fits) {
    std::unique_lock lock(mutex_);
    const auto find = [&] { return std::find_if(samples_.begin(), samples_.end(), fits); };
    if (!changed_.wait_for(lock, patience, [&] { return find() != samples_.end(); })) {
        throw std::runtime_error("the sample did not come; there were " + std::to_string(samples_.size()));
    }
    return *find();
}

ScreenSample ScreenSamples::waitForPixel(std::uint32_t value, std::size_t index) {
    return waitFor(
        [=](const ScreenSample& sample) { return index < sample.pixels.size() && sample.pixels[index] == value; });
}

ScreenSample ScreenSamples::waitForStatus(SCFrameStatus status) {
    return waitFor([=](const ScreenSample& sample) { return sample.status == status; });
}

std::exception_ptr ScreenSamples::waitForEnd() {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, patience, [&] { return end_.has_value(); })) {
        throw std::runtime_error("the stream did not end");
    }
    return *end_;
}

void ScreenSamples::forget() {
    const std::lock_guard lock(mutex_);
    samples_.clear();
}

std::vector<ScreenSample> ScreenSamples::all() const {
    const std::lock_guard lock(mutex_);
    return samples_;
}

std::size_t ScreenSamples::count(SCFrameStatus status) const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::count_if(samples_.begin(), samples_.end(),
                                                  [=](const ScreenSample& sample) { return sample.status == status; }));
}

void ScreenSamples::hold(std::size_t pictures) {
    const std::lock_guard lock(mutex_);
    mayHold_ = pictures;
}

void ScreenSamples::letGo() {
    const std::lock_guard lock(mutex_);
    mayHold_ = 0;
    held_.clear();
}

CVPixelBufferRef ScreenSamples::held() const {
    const std::lock_guard lock(mutex_);
    return held_.empty() ? CVPixelBufferRef() : held_.back();
}

void ScreenSamples::stream(SCStream&, const CMSampleBuffer& sampleBuffer, SCStreamOutputType) {
    ScreenSample sample{.status = static_cast<SCFrameStatus>(sampleBuffer.attachments().frameStatus.value()),
                        .seconds = sampleBuffer.presentationTimeStamp().seconds()};
    const auto& picture = sampleBuffer.imageBuffer();
    if (picture) {
        sample.layout = picture->layout();
        for (const Point& point : points_) {
            sample.pixels.push_back(pixelAt(*picture, point.x, point.y));
        }
    }
    const std::lock_guard lock(mutex_);
    if (picture && held_.size() < mayHold_) {
        held_.push_back(picture);
    }
    samples_.push_back(std::move(sample));
    changed_.notify_all();
}

void ScreenSamples::streamDidStopWithError(SCStream&, std::exception_ptr error) {
    const std::lock_guard lock(mutex_);
    end_ = std::move(error);
    changed_.notify_all();
}

}  // namespace zorvane
