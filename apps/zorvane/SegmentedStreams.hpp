// The segmented streams of a bundle, as their playlists tell them.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace zorvane::cli {

/// One stream of pictures or sound.
struct StreamReport {
    std::string playlist;      ///< file name
    std::size_t segments = 0;  ///< that the playlist offers
    std::size_t lost = 0;      ///< that could not be written
    double duration = 0;       ///< seconds, lost ones included
    bool isEnded = false;      ///< false of a recording that was cut off, or goes on
};

/// The streams whose playlists lie in the bundle, by name. A playlist that can't be read is left out.
std::vector<StreamReport> readStreams(const std::filesystem::path& bundle);

}  // namespace zorvane::cli
