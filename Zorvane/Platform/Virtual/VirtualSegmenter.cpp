#include "Zorvane/Platform/Virtual/VirtualSegmenter.hpp"

#include <algorithm>
#include <utility>

namespace zorvane {

VirtualSegmenter::VirtualSegmenter(AVAssetSegmenting segmenting, AVMediaType mediaType, Output output)
    : segmenting_(std::move(segmenting)), mediaType_(mediaType), output_(std::move(output)) {}

void VirtualSegmenter::append(CMTime presentationTime, CMTime duration) {
    const CMTime begin = std::max(presentationTime - start_, kCMTimeZero);
    const CMTime interval = segmenting_.preferredOutputSegmentInterval;
    while (begin >= segmentStart_ + interval) {
        handOutUntil(segmentStart_ + interval);
    }
    samples_.push_back({begin, duration.isNumeric() ? begin + duration : begin});
}

void VirtualSegmenter::finish() {
    if (samples_.empty() && !didInitialize_) {
        return;
    }
    const CMTime end = end_ ? *end_ - start_ : samples_.empty() ? segmentStart_ : samples_.back().end;
    while (end > segmentStart_) {
        handOutUntil(std::min(end, segmentStart_ + segmenting_.preferredOutputSegmentInterval));
    }
}

void VirtualSegmenter::handOutUntil(CMTime end) {
    if (!std::exchange(didInitialize_, true)) {
        output_({.type = AVAssetSegmentType::initialization,
                 .report = std::nullopt,
                 .data = std::vector<std::byte>(bytesPerSample)});
    }
    const AVAssetSegmentReport report{
        .mediaType = mediaType_,
        .earliestPresentationTimeStamp = segmenting_.initialSegmentStartTime + segmentStart_,
        .duration = end - segmentStart_};
    const std::size_t count = std::erase_if(samples_, [&](const Sample& sample) { return sample.begin < end; });
    output_({.report = report, .data = std::vector<std::byte>(count * bytesPerSample)});
    segmentStart_ = end;
}

}  // namespace zorvane
