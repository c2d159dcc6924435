#include "Zorvane/Internal/Recorders/MasterPlaylist.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "Zorvane/Internal/FileURL.hpp"

namespace zorvane {
namespace {

using OptionalText = std::optional<std::string>;

std::string urlOf(const MediaPlaylistFile& file) {
    return relativeURLString(file.url.filename().native());
}

/// The attribute's value; quotes and line ends can't be part of one.
std::string quoted(std::string text) {
    std::ranges::replace_if(
        text, [](char character) { return character == '"' || character == '\r' || character == '\n'; }, '\'');
    return '"' + text + '"';
}

/// A rendition; one without a playlist of its own is part of the variant stream's.
void appendMedia(std::string& text, std::string_view type, const OptionalText& name, std::string_view otherAttributes) {
    const std::string group = type == "AUDIO" ? "audio" : "video";
    fmt::format_to(std::back_inserter(text),
                   "#EXT-X-MEDIA:TYPE={},GROUP-ID=\"{}\",NAME={},DEFAULT=YES,AUTOSELECT=YES{}\n", type, group,
                   quoted(name.value_or(group)), otherAttributes);
}

OptionalText codecOf(const MediaPlaylistFile* stream, const OptionalText& expected) {
    if (!stream) {
        return std::nullopt;
    }
    return stream->playlist.codecName ? stream->playlist.codecName : expected;
}

std::string joined(const OptionalText& first, const OptionalText& second) {
    return first && second ? *first + "," + *second : first.value_or(second.value_or(""));
}

}  // namespace

std::string MasterPlaylist::text(const MediaPlaylistFile* audio, const MediaPlaylistFile* video) const {
    std::string text = "#EXTM3U\n#EXT-X-VERSION:7\n#EXT-X-INDEPENDENT-SEGMENTS\n";
    std::string variant = "#EXT-X-STREAM-INF:";
    const auto attribute = [&variant](std::string_view name, const auto& value) {
        fmt::format_to(std::back_inserter(variant), "{}{}={}", variant.ends_with(':') ? "" : ",", name, value);
    };
    std::int64_t bandwidth = 0;
    std::int64_t averageBandwidth = 0;
    for (const MediaPlaylistFile* stream : {audio, video}) {
        if (stream) {
            bandwidth += stream->playlist.peakBitRate();
            averageBandwidth += stream->playlist.averageBitRate();
        }
    }
    attribute("BANDWIDTH", bandwidth);
    attribute("AVERAGE-BANDWIDTH", averageBandwidth);
    if (const std::string codecs = joined(codecOf(video, videoCodecName), codecOf(audio, audioCodecName));
        !codecs.empty()) {
        attribute("CODECS", quoted(codecs));
    }
    if (audio) {
        const std::string channels =
            audioChannelsCount ? fmt::format(",CHANNELS=\"{}\"", *audioChannelsCount) : std::string();
        const std::string url = video ? fmt::format(",URI=\"{}\"", urlOf(*audio)) : std::string();
        appendMedia(text, "AUDIO", audioTrackName, channels + url);
        attribute("AUDIO", "\"audio\"");
    }
    if (video) {
        appendMedia(text, "VIDEO", videoTrackName, "");
        attribute("VIDEO", "\"video\"");
        if (videoResolution) {
            attribute("RESOLUTION", fmt::format("{}x{}", videoResolution->width, videoResolution->height));
        }
    }
    return text + variant + '\n' + urlOf(video ? *video : *audio) + '\n';
}

}  // namespace zorvane
