// Puts a writer's segments into files, and tells of them.
#pragma once

#include <cstddef>
#include <exception>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/Recorders/MediaPlaylist.hpp"
#include "Zorvane/Internal/SourceNotices.hpp"
#include "Zorvane/Platform/AVFoundation/AVAssetSegment.hpp"
#include "Zorvane/ZVOutputOptions.hpp"

namespace zorvane {

/// Each segment becomes a file of its own, "prefix-0000.mp4" for the initialization and "prefix-0001.m4s" and so on for
/// the media; no reader ever sees a part of one. Behind each the media playlist "prefix.m3u8" is replaced by one that
/// lists it, then the host is told.
///
/// A segment that can't be written is lost, its number stays free, the host gets a notice, and the recording goes on.
/// But without the initialization nothing can be played: it is kept and tried again before each following segment.
///
/// The delegate's calls come one at a time; `finishPlaylist` comes after the last of them.
class SegmentedCoordinator final : public AVAssetWriterDelegate {
  public:
    /// Hears of the playlist whenever its file was replaced, on the delegate's thread.
    using PlaylistHandler = std::function<void(const MediaPlaylistFile& playlist)>;

    struct Parameters {
        std::filesystem::path directoryURL;
        std::string filenamePrefix;
        std::int64_t targetDuration = 0;  ///< seconds
        DispatchQueue segmentCallbackQueue;
        ZVSegmentedOutput::SegmentCallback segmentCallback;  ///< not empty; what it throws is logged
        PlaylistHandler playlistHandler;                     ///< may be empty
        NoticeHandler onNotice;                              ///< hears of lost segments; may be empty
        Logger logger;
    };

    explicit SegmentedCoordinator(Parameters parameters);

    void didOutputSegmentData(AVAssetWriter& writer, std::span<const std::byte> data, AVAssetSegmentType type,
                              const std::optional<AVAssetSegmentReport>& report) override;

    /// Closes the playlist's file and gives the playlist; nothing if there has been no media. A file that can't be
    /// replaced is logged.
    std::optional<MediaPlaylistFile> finishPlaylist();

  private:
    std::filesystem::path nextURL(AVAssetSegmentType type);
    void takeInitialization(std::filesystem::path url, std::span<const std::byte> data);
    void takeMedia(const std::filesystem::path& url, std::span<const std::byte> data,
                   const std::optional<AVAssetSegmentReport>& report);
    std::exception_ptr writeInitialization();
    std::exception_ptr write(const std::filesystem::path& url, std::span<const std::byte> data) const;
    void tellOfLoss(const std::filesystem::path& url, const std::exception_ptr& reason) const;
    void tellHost(std::filesystem::path url) const;
    bool writePlaylist(MediaPlaylist::Ending ending) const;

    const Parameters parameters_;
    std::int64_t segmentCount_ = 0;  // on the delegate's thread, as all below
    std::filesystem::path initializationURL_;
    std::vector<std::byte> initialization_;  // empty once it is in its file
    MediaPlaylistFile playlist_;
};

}  // namespace zorvane
