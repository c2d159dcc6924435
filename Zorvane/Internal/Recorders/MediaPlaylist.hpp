// The list of one stream's segments, as a player reads it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

/// What a media playlist of HTTP Live Streaming (RFC 8216) says of a stream of fragmented MPEG-4 segments. A value.
struct MediaPlaylist {
    struct Segment {
        std::string filename;
        CMTime earliestPTS;  ///< as the writer reports it, like the duration
        CMTime decodeDuration;
        std::int64_t byteCount = 0;
        std::optional<std::string> title = std::nullopt;
        /// The file couldn't be written: players stay idle for the segment's time, and the streams stay in step.
        bool isMissing = false;
    };

    /// The playlist's whole content. While the recording goes on, each text begins with the one before it.
    enum class Ending { open, closed };
    std::string text(Ending ending) const;

    /// Bits per second of the most costly stretch of about a target duration, and of the whole; rounded up.
    std::int64_t peakBitRate() const;
    std::int64_t averageBitRate() const;

    std::string initializationSegmentFilename;
    std::int64_t targetDuration = 0;  ///< seconds; no segment's duration may round to more
    std::vector<Segment> segments;
    /// The codec as RFC 6381 names it, found in the media; nothing while it isn't known.
    std::optional<std::string> codecName = std::nullopt;
};

/// A media playlist and the file that it stands in.
struct MediaPlaylistFile {
    std::filesystem::path url;
    MediaPlaylist playlist;
};

}  // namespace zorvane
