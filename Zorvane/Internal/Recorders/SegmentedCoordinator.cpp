#include "Zorvane/Internal/Recorders/SegmentedCoordinator.hpp"

#include <fmt/format.h>

#include <exception>
#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Foundation/PrivateFiles.hpp"

namespace zorvane {
namespace {

namespace fs = std::filesystem;

std::string_view extensionOf(AVAssetSegmentType type) {
    return type == AVAssetSegmentType::initialization ? "mp4" : "m4s";
}

std::string describe(const std::optional<AVAssetSegmentReport>& report) {
    if (!report) {
        return "none";
    }
    return fmt::format("{} from {} for {}", report->mediaType == AVMediaType::video ? "video" : "audio",
                       report->earliestPresentationTimeStamp.logDescription(), report->duration.logDescription());
}

std::string_view asText(std::span<const std::byte> data) {
    return {reinterpret_cast<const char*>(data.data()), data.size()};
}

}  // namespace

SegmentedCoordinator::SegmentedCoordinator(Parameters parameters) : parameters_(std::move(parameters)) {
    playlist_.url = parameters_.directoryURL / (parameters_.filenamePrefix + ".m3u8");
    playlist_.playlist.targetDuration = parameters_.targetDuration;
}

void SegmentedCoordinator::didOutputSegmentData(AVAssetWriter&, std::span<const std::byte> data,
                                                AVAssetSegmentType type,
                                                const std::optional<AVAssetSegmentReport>& report) {
    fs::path url = nextURL(type);
    parameters_.logger.trace([&] {
        return fmt::format("Writing segment data: {}, segmentType:{}", url.filename().native(), static_cast<int>(type));
    });
    parameters_.logger.trace([&] {
        return fmt::format("Did output segment data: {} bytes, segmentReport:{}", data.size(), describe(report));
    });
    if (type == AVAssetSegmentType::initialization) {
        takeInitialization(std::move(url), data);
    } else {
        takeMedia(url, data, report);
    }
}

fs::path SegmentedCoordinator::nextURL(AVAssetSegmentType type) {
    return parameters_.directoryURL /
           fmt::format("{}-{:04}.{}", parameters_.filenamePrefix, segmentCount_++, extensionOf(type));
}

void SegmentedCoordinator::takeInitialization(fs::path url, std::span<const std::byte> data) {
    playlist_.playlist.initializationSegmentFilename = url.filename();
    initializationURL_ = std::move(url);
    initialization_.assign(data.begin(), data.end());
    writeInitialization();
}

void SegmentedCoordinator::takeMedia(const fs::path& url, std::span<const std::byte> data,
                                     const std::optional<AVAssetSegmentReport>& report) {
    const bool isPlayable = writeInitialization();
    const bool isWritten = write(url, data);
    const AVAssetSegmentReport known = report.value_or(AVAssetSegmentReport{});
    playlist_.playlist.codecName = known.codecName;
    playlist_.playlist.segments.push_back({.filename = url.filename(),
                                           .earliestPTS = known.earliestPresentationTimeStamp,
                                           .decodeDuration = known.duration,
                                           .byteCount = isWritten ? static_cast<std::int64_t>(data.size()) : 0,
                                           .isMissing = !isWritten});
    if (isPlayable && writePlaylist(MediaPlaylist::Ending::open) && parameters_.playlistHandler) {
        parameters_.playlistHandler(playlist_);
    }
    if (isWritten) {
        tellHost(url);
    }
}

/// Whether the initialization is in its file.
bool SegmentedCoordinator::writeInitialization() {
    if (!initialization_.empty() && write(initializationURL_, initialization_)) {
        initialization_.clear();
        tellHost(initializationURL_);
    }
    return initialization_.empty();
}

bool SegmentedCoordinator::write(const fs::path& url, std::span<const std::byte> data) const {
    try {
        replacePrivateFile(url, asText(data));
        return true;
    } catch (const NSError& error) {
        parameters_.logger.error("Error writing segment data: " + error.localizedDescription());
        return false;
    }
}

void SegmentedCoordinator::tellHost(fs::path url) const {
    parameters_.segmentCallbackQueue.async(
        [callback = parameters_.segmentCallback, logger = parameters_.logger, url = std::move(url)] {
            const PoolBlockingScope blocking;  // a host may well send the file away here
            try {
                callback(url);
            } catch (...) {
                logger.error("The segment callback threw.", errorMetadata(std::current_exception()));
            }
        });
}

bool SegmentedCoordinator::writePlaylist(MediaPlaylist::Ending ending) const {
    try {
        replacePrivateFile(playlist_.url, playlist_.playlist.text(ending));
        return true;
    } catch (const NSError& error) {
        parameters_.logger.error("Error writing playlist: " + error.localizedDescription());
        return false;
    }
}

std::optional<MediaPlaylistFile> SegmentedCoordinator::finishPlaylist() {
    if (playlist_.playlist.segments.empty() || !writeInitialization()) {
        return std::nullopt;
    }
    writePlaylist(MediaPlaylist::Ending::closed);
    return playlist_;
}

}  // namespace zorvane
