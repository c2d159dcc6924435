#include "tests/Support/PictureCollector.hpp"

#include <chrono>

namespace zorvane {
namespace {

constexpr std::chrono::seconds patience{30};

}  // namespace

void PictureCollector::captureOutput(const AVCaptureDataOutput&, const CMSampleBuffer& sampleBuffer) {
    const CVPixelBuffer& picture = *sampleBuffer.imageBuffer();
    const Seen seen{.time = sampleBuffer.presentationTimeStamp().value,
                    .layout = picture.layout(),
                    .described = sampleBuffer.formatDescription()->dimensions,
                    .value = look_ ? look_(picture) : 0};
    const std::lock_guard lock(mutex_);
    pictures_.push_back(seen);
    changed_.notify_all();
}

std::vector<PictureCollector::Seen> PictureCollector::pictures() const {
    const std::lock_guard lock(mutex_);
    return pictures_;
}

std::size_t PictureCollector::count() const {
    const std::lock_guard lock(mutex_);
    return pictures_.size();
}

bool PictureCollector::waitFor(const std::function<bool(const std::vector<Seen>&)>& condition) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, patience, [&] { return condition(pictures_); });
}

bool PictureCollector::waitForPictures(std::size_t count) const {
    return waitFor([count](const auto& pictures) { return pictures.size() >= count; });
}

bool PictureCollector::waitForMorePictures(std::size_t count) const {
    return waitForPictures(this->count() + count);
}

}  // namespace zorvane
