#include "Zorvane/Internal/Recorders/MasterPlaylistWriter.hpp"

#include <utility>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Foundation/PrivateFiles.hpp"

namespace zorvane {
namespace {

const MediaPlaylistFile* pointerTo(const std::optional<MediaPlaylistFile>& file) {
    return file ? &*file : nullptr;
}

}  // namespace

MasterPlaylistWriter::MasterPlaylistWriter(std::filesystem::path url, MasterPlaylist playlist, Logger logger)
    : url_(std::move(url)), playlist_(std::move(playlist)), logger_(std::move(logger)) {}

void MasterPlaylistWriter::expectStreams(int count) {
    MutexLock lock(mutex_);
    missingStreams_ = count;
}

void MasterPlaylistWriter::noteSegment(AVMediaType stream, const MediaPlaylistFile& file) {
    MutexLock lock(mutex_);
    std::optional<MediaPlaylistFile>& first = stream == AVMediaType::audio ? audio_ : video_;
    if (first) {
        return;
    }
    first = file;
    if (--missingStreams_ == 0) {
        write(audio_, video_);
    }
}

void MasterPlaylistWriter::write(const std::optional<MediaPlaylistFile>& audio,
                                 const std::optional<MediaPlaylistFile>& video) const {
    if (!audio && !video) {
        return;
    }
    try {
        replacePrivateFile(url_, playlist_.text(pointerTo(audio), pointerTo(video)));
    } catch (const NSError& error) {
        logger_.error("Error writing playlist: " + error.localizedDescription());
    }
}

}  // namespace zorvane
