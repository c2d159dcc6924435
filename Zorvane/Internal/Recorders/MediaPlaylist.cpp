#include "Zorvane/Internal/Recorders/MediaPlaylist.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "Zorvane/Internal/FileURL.hpp"

namespace zorvane {
namespace {

/// Fragmented MPEG-4 needs 6, and common players expect 7 with it.
constexpr int version = 7;

std::string oneLine(std::string text) {
    std::ranges::replace_if(
        text, [](char character) { return character == '\r' || character == '\n'; }, ' ');
    return text;
}

void appendSegment(std::string& text, const MediaPlaylist::Segment& segment) {
    const auto end = std::back_inserter(text);
    if (segment.isMissing) {
        // Not in RFC 8216 but in its successor; who doesn't know it finds no file there, and goes on too.
        text += "#EXT-X-GAP\n";
    }
    fmt::format_to(end, "#EXTINF:{:.6f},{}\n{}\n", segment.decodeDuration.seconds(),
                   oneLine(segment.title.value_or("")), relativeURLString(segment.filename));
}

struct Stretch {
    std::int64_t bytes = 0;
    double seconds = 0;

    void add(const MediaPlaylist::Segment& segment) {
        bytes += segment.byteCount;
        seconds += segment.decodeDuration.seconds();
    }
    std::int64_t bitRate() const {
        return seconds > 0 ? static_cast<std::int64_t>(std::ceil(static_cast<double>(bytes) * 8 / seconds)) : 0;
    }
};

}  // namespace

std::string MediaPlaylist::text(Ending ending) const {
    std::string text = fmt::format(
        "#EXTM3U\n"
        "#EXT-X-VERSION:{}\n"
        "#EXT-X-TARGETDURATION:{}\n"
        "#EXT-X-MEDIA-SEQUENCE:0\n"
        "#EXT-X-PLAYLIST-TYPE:EVENT\n"
        "#EXT-X-INDEPENDENT-SEGMENTS\n"
        "#EXT-X-MAP:URI=\"{}\"\n",
        version, targetDuration, relativeURLString(initializationSegmentFilename));
    for (const Segment& segment : segments) {
        appendSegment(text, segment);
    }
    if (ending == Ending::closed) {
        text += "#EXT-X-ENDLIST\n";
    }
    return text;
}

// The standard's stretches: all segments in a row that last from half to one and a half target durations.
std::int64_t MediaPlaylist::peakBitRate() const {
    const auto target = static_cast<double>(targetDuration);
    std::int64_t peak = 0;
    for (auto first = segments.begin(); first != segments.end(); ++first) {
        Stretch stretch;
        for (auto last = first; last != segments.end() && stretch.seconds <= 1.5 * target; ++last) {
            stretch.add(*last);
            if (stretch.seconds >= 0.5 * target && stretch.seconds <= 1.5 * target) {
                peak = std::max(peak, stretch.bitRate());
            }
        }
    }
    return peak > 0 ? peak : averageBitRate();
}

std::int64_t MediaPlaylist::averageBitRate() const {
    Stretch whole;
    for (const Segment& segment : segments) {
        whole.add(segment);
    }
    return whole.bitRate();
}

}  // namespace zorvane
