// Keeps a recording's master playlist on the disk.
#pragma once

#include <filesystem>
#include <optional>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/Recorders/MasterPlaylist.hpp"
#include "Zorvane/Platform/AVFoundation/AVMediaType.hpp"

namespace zorvane {

/// Writes the master playlist when every stream has a segment, so that a player can begin while the recording goes on,
/// and again at the end with the final bit rates. A file that can't be written is logged. Any thread.
class MasterPlaylistWriter {
  public:
    MasterPlaylistWriter(std::filesystem::path url, MasterPlaylist playlist, Logger logger);

    /// How many streams there will be. Before the first segment.
    void expectStreams(int count);

    /// A stream has this playlist now. What is not its first is ignored.
    void noteSegment(AVMediaType stream, const MediaPlaylistFile& file);

    /// The final playlist; nothing is written without any stream.
    void write(const std::optional<MediaPlaylistFile>& audio, const std::optional<MediaPlaylistFile>& video) const;

  private:
    const std::filesystem::path url_;
    const MasterPlaylist playlist_;
    const Logger logger_;
    Mutex mutex_;
    int missingStreams_ ZV_GUARDED_BY(mutex_) = 0;
    std::optional<MediaPlaylistFile> audio_ ZV_GUARDED_BY(mutex_);  // as it was with its first segment
    std::optional<MediaPlaylistFile> video_ ZV_GUARDED_BY(mutex_);
};

}  // namespace zorvane
