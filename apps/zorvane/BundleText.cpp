// A bundle's report for people.
#include <iterator>

#include <fmt/format.h>

#include "BundleReport.hpp"
#include "Figures.hpp"

namespace zorvane::cli {
namespace {

std::string secondsText(const std::optional<double>& seconds) {
    return seconds ? fmt::format("{:.3f} s", *seconds) : "of unknown length";
}

std::string colorText(const ZVMediaInfo::ColorTags& tags) {
    const auto name = [](const std::string& tag) { return tag.empty() ? "untagged" : tag.c_str(); };
    return fmt::format("primaries {}, transfer {}, matrix {}, range {}", name(tags.primaries),
                       name(tags.transferFunction), name(tags.matrix), name(tags.range));
}

struct FormatText {
    std::string codec;

    std::string operator()(const ZVMediaInfo::Video& video) const {
        return fmt::format("video {} {}x{}, {}, {}", codec, video.width, video.height,
                           countText(video.frameCount, "frame"), colorText(video.colorTags));
    }
    std::string operator()(const ZVMediaInfo::Audio& audio) const {
        return fmt::format("audio {} {} Hz, {}", codec, audio.sampleRate, countText(audio.channelCount, "channel"));
    }
    std::string operator()(const ZVMediaInfo::Other&) const { return codec; }
};

void addFile(std::string& text, const FileReport& file) {
    auto out = std::back_inserter(text);
    fmt::format_to(out, "{} ({})", printable(file.asset.filename), zorvane::rawValue(file.asset.type));
    if (file.media) {
        fmt::format_to(out, ": {}, {}", secondsText(file.media->duration), file.media->container);
    }
    if (file.size) {
        fmt::format_to(out, ", {}", sizeText(*file.size));
    }
    text += '\n';
    if (file.error) {
        fmt::format_to(out, "  broken: {}\n", printable(*file.error));
    }
    if (file.media) {
        for (const auto& track : file.media->tracks) {
            fmt::format_to(out, "  {}, {}\n", std::visit(FormatText{track.codec}, track.format),
                           secondsText(track.duration));
        }
    }
    if (file.input) {
        fmt::format_to(out, "  {}\n", summaryText(*file.input));
    }
    if (file.topWindows) {
        for (const std::string& line : summaryLines(*file.topWindows)) {
            fmt::format_to(out, "  {}\n", line);
        }
    }
}

void addStream(std::string& text, const StreamReport& stream) {
    auto out = std::back_inserter(text);
    fmt::format_to(out, "{} (stream): {}, {}{}\n", printable(stream.playlist), secondsText(stream.duration),
                   countText(stream.segments, "segment"), stream.isEnded ? "" : ", without an end");
    if (stream.lost > 0) {
        fmt::format_to(out, "  {} could not be written\n", countText(stream.lost, "segment"));
    }
}

}  // namespace

std::string bundleText(const BundleReport& report) {
    std::string text =
        fmt::format("{}: {}\n", printable(report.bundle.string()), countText(report.files.size(), "file"));
    for (const FileReport& file : report.files) {
        addFile(text, file);
    }
    for (const StreamReport& stream : report.streams) {
        addStream(text, stream);
    }
    for (const std::string& name : report.unlisted) {
        text += printable(name) + "\n  not in the manifest: it was cut off, and plays up to there\n";
    }
    return text;
}

}  // namespace zorvane::cli
