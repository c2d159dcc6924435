#include "Zorvane/Internal/Recorders/SegmentedAssetWriter.hpp"

#include <utility>

#include "Zorvane/Internal/AVAssetWriterSafeCalls.hpp"
#include "Zorvane/Internal/Recorders/OutputAssetWriters.hpp"
#include "Zorvane/Platform/AVFoundation/AVMediaWriting.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {
namespace {

std::shared_ptr<AVAssetWriter> makeWriter(std::int64_t segmentDuration, std::weak_ptr<AVAssetWriterDelegate> delegate) {
    const AVAssetSegmenting segmenting{.preferredOutputSegmentInterval = CMTime::make(segmentDuration, 1),
                                       .initialSegmentStartTime = kCMTimeZero,
                                       .delegate = std::move(delegate)};
    return Platform::current()->mediaWriting->makeSegmentWriter(segmenting);
}

}  // namespace

SegmentedAssetWriter::SegmentedAssetWriter(SegmentedCoordinator::Parameters parameters)
    : coordinator_(std::make_shared<SegmentedCoordinator>(parameters)),
      assetWriter_(makeWriter(parameters.targetDuration, coordinator_)) {}

void SegmentedAssetWriter::startWriting() {
    if (isUsed()) {
        zorvane::startWriting(*assetWriter_);
    }
}

Task<std::optional<MediaPlaylistFile>> SegmentedAssetWriter::finishWriting() {
    if (!isUsed()) {
        co_return std::nullopt;
    }
    co_await safe_finishWriting(assetWriter_);
    std::optional<MediaPlaylistFile> playlist = coordinator_->finishPlaylist();
    if (const std::exception_ptr error = assetWriter_->error()) {
        std::rethrow_exception(error);
    }
    co_return playlist;
}

}  // namespace zorvane
