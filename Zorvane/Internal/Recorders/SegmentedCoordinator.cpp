#include "Zorvane/Internal/Recorders/SegmentedCoordinator.hpp"

#include <fmt/format.h>

#include <exception>
#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Foundation/PrivateFiles.hpp"
#include "Zorvane/ZVError.hpp"

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
    const bool isPlayable = writeInitialization() == nullptr;
    const std::exception_ptr error = write(url, data);
    const AVAssetSegmentReport known = report.value_or(AVAssetSegmentReport{});
    playlist_.playlist.codecName = known.codecName;
    playlist_.playlist.segments.push_back({.filename = url.filename(),
                                           .earliestPTS = known.earliestPresentationTimeStamp,
                                           .decodeDuration = known.duration,
                                           .byteCount = error ? 0 : static_cast<std::int64_t>(data.size()),
                                           .isMissing = error != nullptr});
    if (isPlayable && writePlaylist(MediaPlaylist::Ending::open) && parameters_.playlistHandler) {
        parameters_.playlistHandler(playlist_);
    }
    if (error) {
        tellOfLoss(url, error);
    } else {
        tellHost(url);
    }
}

/// Null if the initialization is in its file now, or why it isn't.
std::exception_ptr SegmentedCoordinator::writeInitialization() {
    if (initialization_.empty()) {
        return nullptr;
    }
    if (std::exception_ptr error = write(initializationURL_, initialization_)) {
        return error;
    }
    initialization_.clear();
    tellHost(initializationURL_);
    return nullptr;
}

/// Null, or why the file couldn't be written.
std::exception_ptr SegmentedCoordinator::write(const fs::path& url, std::span<const std::byte> data) const {
    try {
        replacePrivateFile(url, asText(data));
        return nullptr;
    } catch (const NSError& error) {
        parameters_.logger.error("Error writing segment data: " + error.localizedDescription());
        return std::current_exception();
    }
}

void SegmentedCoordinator::tellOfLoss(const fs::path& url, const std::exception_ptr& reason) const {
    if (parameters_.onNotice) {
        const std::string name = url.filename();
        parameters_.onNotice(
            {ZVRecordingNotice::Kind::segmentLost, name, reason,
             fmt::format("The segment '{}' is lost. {} The recording goes on.", name, localizedDescription(reason))});
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
    if (playlist_.playlist.segments.empty()) {
        return std::nullopt;
    }
    if (const std::exception_ptr error = writeInitialization()) {
        tellOfLoss(initializationURL_, error);
        return std::nullopt;
    }
    writePlaylist(MediaPlaylist::Ending::closed);
    return playlist_;
}

}  // namespace zorvane
