#include "SegmentedStreams.hpp"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

namespace zorvane::cli {
namespace {

namespace fs = std::filesystem;

/// Nothing for a playlist that lists other playlists.
std::optional<StreamReport> readStream(const fs::path& playlist) {
    constexpr std::string_view duration = "#EXTINF:";
    StreamReport report{.playlist = playlist.filename().string()};
    bool isLost = false;
    std::ifstream file(playlist);
    for (std::string line; std::getline(file, line);) {
        if (line == "#EXT-X-GAP") {
            isLost = true;
        } else if (line == "#EXT-X-ENDLIST") {
            report.isEnded = true;
        } else if (line.starts_with(duration)) {
            report.duration += std::strtod(line.c_str() + duration.size(), nullptr);
            ++(isLost ? report.lost : report.segments);
            isLost = false;
        }
    }
    return report.segments + report.lost > 0 ? std::optional(report) : std::nullopt;
}

}  // namespace

std::vector<StreamReport> readStreams(const fs::path& bundle) {
    std::vector<StreamReport> streams;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(bundle, error)) {
        if (entry.path().extension() == ".m3u8") {
            if (const auto stream = readStream(entry.path())) {
                streams.push_back(*stream);
            }
        }
    }
    std::ranges::sort(streams, {}, &StreamReport::playlist);
    return streams;
}

}  // namespace zorvane::cli
