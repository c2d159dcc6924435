// What a media file of a bundle holds: its length and its tracks.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace zorvane {

/// The description of one media file, read from its index. Nothing is decoded.
struct ZVMediaInfo {
    /// The names that a video track gives of its colours, such as "bt709" or "smpte432"; empty where it gives none.
    struct ColorTags {
        std::string primaries;
        std::string transferFunction;
        std::string matrix;
        std::string range;  ///< "tv" for limited, "pc" for full

        bool operator==(const ColorTags&) const = default;
    };

    /// What is told of a track of pictures.
    struct Video {
        /// Pixels.
        std::int32_t width = 0;
        std::int32_t height = 0;
        std::uint64_t frameCount = 0;
        ColorTags colorTags = {};

        bool operator==(const Video&) const = default;
    };

    /// What is told of a track of sound.
    struct Audio {
        /// Samples per second, of one channel.
        std::int32_t sampleRate = 0;
        std::int32_t channelCount = 0;

        bool operator==(const Audio&) const = default;
    };

    /// Subtitles, data and whatever else isn't described further.
    struct Other {
        bool operator==(const Other&) const = default;
    };

    /// One track of the file.
    struct Track {
        /// The codec's short name, such as "h264", "hevc" or "aac"; "unknown" if it has none.
        std::string codec;
        /// Seconds on the file's time line; absent if the file doesn't say. Tracks of one bundle that cover the whole
        /// recording begin at 0 and last equally long.
        std::optional<double> begin = std::nullopt;
        std::optional<double> duration = std::nullopt;
        std::variant<Video, Audio, Other> format = Other{};

        bool operator==(const Track&) const = default;
    };

    /// The container format, such as "QuickTime / MOV".
    std::string container;
    /// Seconds; absent if the file doesn't say.
    std::optional<double> duration = std::nullopt;
    std::vector<Track> tracks = {};

    /// Reads a file. A recording that was cut off is read as far as it goes. Throws a `std::exception` whose text says
    /// what is wrong: the file is missing, may not be read, or holds no media. Blocks while it reads, which for a cut
    /// off file may take as long as reading all of it. Any thread.
    static ZVMediaInfo read(const std::filesystem::path& path);

    bool operator==(const ZVMediaInfo&) const = default;
};

}  // namespace zorvane
