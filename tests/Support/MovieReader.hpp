// Reads movies back with the FFmpeg libraries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace zorvane::testing {

struct MoviePacket {
    std::int64_t pts = 0;  ///< units of the movie's time scale
    std::int64_t dts = 0;
    std::int64_t duration = 0;
    bool isKey = false;
};

/// A decoded picture; of 10 bits per sample the upper 8.
struct MoviePicture {
    std::int64_t pts = 0;
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> cb;  ///< half the size, rounded up
    std::vector<std::uint8_t> cr;

    std::uint8_t lumaAt(int x, int y) const { return luma[static_cast<std::size_t>(y * width + x)]; }
    std::uint8_t cbAt(int x, int y) const { return cb[static_cast<std::size_t>(y / 2 * ((width + 1) / 2) + x / 2)]; }
    std::uint8_t crAt(int x, int y) const { return cr[static_cast<std::size_t>(y / 2 * ((width + 1) / 2) + x / 2)]; }
};

/// A movie's first video track, as a player sees it.
struct Movie {
    std::string brand;
    std::string codec;
    std::string profile;
    std::string pixelFormat;
    std::string range;
    std::string primaries;
    std::string transfer;
    std::string matrix;
    std::string tag;
    int width = 0;
    int height = 0;
    int timescale = 0;
    std::int64_t startTime = 0;
    std::int64_t duration = 0;  ///< of the track
    std::vector<MoviePacket> packets;
    std::vector<MoviePicture> pictures;  ///< only if decoded

    std::vector<std::int64_t> times() const;
    std::vector<std::int64_t> durations() const;
};

/// A movie's first track of sound, as a player hears it.
struct MovieSound {
    std::string codec;
    int sampleRate = 0;
    int channels = 0;
    int timescale = 0;
    std::int64_t startTime = 0;
    std::int64_t duration = 0;  ///< of the track
    std::vector<MoviePacket> packets;
    /// Decoded, interleaved, from time 0 to the end of the track. A decoder gives whole packets; what the track says of
    /// the last one, that it ends earlier, has been applied.
    std::vector<float> samples;

    float at(std::int64_t frame, int channel = 0) const {
        return samples.at(static_cast<std::size_t>(frame * channels + channel));
    }
    std::int64_t frameCount() const { return static_cast<std::int64_t>(samples.size()) / channels; }
    /// The frame with the largest sample of the channel from `begin` up to `end`.
    std::int64_t peak(std::int64_t begin, std::int64_t end, int channel = 0) const;
    /// The largest sample of all channels there.
    float loudest(std::int64_t begin, std::int64_t end) const;
};

enum class MovieDetail : std::uint8_t { packets, pictures };

/// A packet that is cut off by the file's end is left out. Throws `std::runtime_error` when this is no movie, or not a
/// whole one, or has no such track.
Movie readMovie(std::span<const std::byte> bytes, MovieDetail detail = MovieDetail::packets);
Movie readMovie(const std::filesystem::path& path, MovieDetail detail = MovieDetail::packets);

/// The same for sound.
MovieSound readSound(std::span<const std::byte> bytes);
MovieSound readSound(const std::filesystem::path& path);

/// The types of the outermost boxes, separated by spaces; a box that is cut off ends in "!".
std::string movieBoxes(std::span<const std::byte> bytes);

}  // namespace zorvane::testing
