// A recorder's media as streams of segments with their playlists.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/OutputDescription.hpp"
#include "Zorvane/Internal/Recorders/MasterPlaylistWriter.hpp"
#include "Zorvane/Internal/Recorders/OutputAssetWriters.hpp"
#include "Zorvane/Internal/Recorders/SegmentedAssetWriter.hpp"

namespace zorvane {

/// Sound and pictures as a stream each, of six seconds a segment: files "prefix-audio-0000.mp4",
/// "prefix-video-0001.m4s" and so on, media playlists "prefix-audio.m3u8" and "prefix-video.m3u8", and the master
/// playlist "prefix.m3u8", which is there as soon as each stream has a segment. A stream whose writer has got no input
/// by `startWriting` doesn't exist: no file, no session, no error.
///
/// The recording doesn't depend on playlists: what goes wrong with one is logged. After destruction no callback runs.
class MultipleStreamsOutputAssetWriters final : public OutputAssetWriters {
  public:
    /// `output`'s callback is called on `segmentCallbackQueue`, without one on a queue of this object's own. Throws
    /// what the platform throws. `onNotice` hears of lost segments.
    MultipleStreamsOutputAssetWriters(const OutputDescription::MultipleStreams& output, MasterPlaylist masterPlaylist,
                                      std::optional<DispatchQueue> segmentCallbackQueue, const Logger& logger,
                                      const NoticeHandler& onNotice = {});

    AVAssetWriter& audioAssetWriter() const override { return audioSegmentWriter_.assetWriter(); }
    AVAssetWriter& videoAssetWriter() const override { return videoSegmentWriter_.assetWriter(); }
    bool expectsZeroBasedVideoPTS() const override { return true; }
    void startWriting() override;

    /// Finishes both streams at once, and ends when the host has heard of every segment: so the list is empty. An error
    /// of one stream is thrown after both have ended.
    Task<std::vector<std::filesystem::path>> finishWriting() override;

  private:
    SegmentedCoordinator::Parameters parametersOf(AVMediaType stream, const OutputDescription::MultipleStreams& output,
                                                  const Logger& logger, const NoticeHandler& onNotice) const;

    /// The queue of the host's callback. When it goes, no call is under way any more, unless it goes in one.
    class CallbackQueue {
      public:
        explicit CallbackQueue(DispatchQueue queue) : queue_(std::move(queue)) {}
        ~CallbackQueue();
        CallbackQueue(const CallbackQueue&) = delete;
        CallbackQueue& operator=(const CallbackQueue&) = delete;

        const DispatchQueue& queue() const { return queue_; }
        /// Ends after the calls that are waiting now.
        Task<> callsToEnd() const;

      private:
        const DispatchQueue queue_;
    };

    const CallbackQueue callbackQueue_;  // goes after the writers, which may give it calls up to their end
    const std::shared_ptr<MasterPlaylistWriter> masterPlaylist_;
    SegmentedAssetWriter audioSegmentWriter_;
    SegmentedAssetWriter videoSegmentWriter_;
};

}  // namespace zorvane
