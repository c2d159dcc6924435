// The list of a recording's streams, which a player opens first.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Zorvane/Internal/Recorders/MediaPlaylist.hpp"
#include "Zorvane/Platform/CoreMedia/CMFormatDescription.hpp"

namespace zorvane {

/// What a master playlist of HTTP Live Streaming (RFC 8216) says of a recorder's streams, as far as the recorder knows
/// it beforehand. A recording without one of the streams leaves its fields empty. A value.
struct MasterPlaylist {
    std::optional<std::int64_t> audioChannelsCount = std::nullopt;
    std::optional<std::string> audioTrackName = std::nullopt;
    /// The codecs count only where the media don't tell, since players refuse what a wrong name announces.
    std::optional<std::string> audioCodecName = std::nullopt;
    std::optional<std::string> videoTrackName = std::nullopt;
    std::optional<std::string> videoCodecName = std::nullopt;
    std::optional<CMVideoDimensions> videoResolution = std::nullopt;

    /// The playlist's whole content: the video with the sound as its only rendition, or the sound alone. The media
    /// playlists lie beside the master playlist; null for a stream that there isn't.
    std::string text(const MediaPlaylistFile* audio, const MediaPlaylistFile* video) const;
};

}  // namespace zorvane
