#include "Zorvane/Internal/Recorders/MultipleStreamsOutputAssetWriters.hpp"

#include <exception>
#include <stop_token>
#include <utility>

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/Concurrency/TaskGroup.hpp"

namespace zorvane {
namespace {

constexpr std::int64_t segmentDuration = 6;  // seconds

}  // namespace

MultipleStreamsOutputAssetWriters::MultipleStreamsOutputAssetWriters(const OutputDescription::MultipleStreams& output,
                                                                     MasterPlaylist masterPlaylist,
                                                                     std::optional<DispatchQueue> segmentCallbackQueue,
                                                                     const Logger& logger,
                                                                     const NoticeHandler& onNotice)
    : callbackQueue_(segmentCallbackQueue ? std::move(*segmentCallbackQueue)
                                          : DispatchQueue::serial("MultipleStreamsOutputAssetWriterQueue")),
      masterPlaylist_(std::make_shared<MasterPlaylistWriter>(output.directoryURL / (output.filenamePrefix + ".m3u8"),
                                                             std::move(masterPlaylist), logger)),
      audioSegmentWriter_(parametersOf(AVMediaType::audio, output, logger, onNotice)),
      videoSegmentWriter_(parametersOf(AVMediaType::video, output, logger, onNotice)) {}

SegmentedCoordinator::Parameters MultipleStreamsOutputAssetWriters::parametersOf(
    AVMediaType stream, const OutputDescription::MultipleStreams& output, const Logger& logger,
    const NoticeHandler& onNotice) const {
    return {.directoryURL = output.directoryURL,
            .filenamePrefix = output.filenamePrefix + (stream == AVMediaType::audio ? "-audio" : "-video"),
            .targetDuration = segmentDuration,
            .segmentCallbackQueue = callbackQueue_.queue(),
            .segmentCallback = output.segmentCallback,
            .playlistHandler = [master = masterPlaylist_,
                                stream](const MediaPlaylistFile& file) { master->noteSegment(stream, file); },
            .onNotice = onNotice,
            .logger = logger};
}

void MultipleStreamsOutputAssetWriters::startWriting() {
    masterPlaylist_->expectStreams(int{audioSegmentWriter_.isUsed()} + int{videoSegmentWriter_.isUsed()});
    audioSegmentWriter_.startWriting();
    videoSegmentWriter_.startWriting();
}

Task<std::vector<std::filesystem::path>> MultipleStreamsOutputAssetWriters::finishWriting() {
    TaskGroup<std::optional<MediaPlaylistFile>> group{std::stop_token()};
    group.add(audioSegmentWriter_.finishWriting());
    group.add(videoSegmentWriter_.finishWriting());
    const auto finished = co_await std::move(group).results().outcome();
    if (finished.isSuccess()) {
        const std::vector<std::optional<MediaPlaylistFile>> streams = finished.value();
        masterPlaylist_->write(streams[0], streams[1]);
    }
    co_await callbackQueue_.callsToEnd();  // which a host may hold up for long, so the files are complete by now
    if (const std::exception_ptr error = finished.error()) {
        std::rethrow_exception(error);
    }
    co_return std::vector<std::filesystem::path>();
}

MultipleStreamsOutputAssetWriters::CallbackQueue::~CallbackQueue() {
    if (!queue_.isCurrent()) {
        queue_.syncBarrier([] {});
    }
}

Task<> MultipleStreamsOutputAssetWriters::CallbackQueue::callsToEnd() const {
    auto [continuation, ended] = makeContinuation();
    queue_.asyncBarrier([continuation = std::move(continuation)] { continuation.resume(); });
    co_await std::move(ended).ignoringCancellation();
}

}  // namespace zorvane
