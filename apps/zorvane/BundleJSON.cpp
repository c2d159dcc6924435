// A bundle's report for scripts.
#include <nlohmann/json.hpp>

#include "BundleReport.hpp"

namespace zorvane::cli {
namespace {

using JSON = nlohmann::ordered_json;

template <class Value>
JSON orNull(const std::optional<Value>& value) {
    return value ? JSON(*value) : JSON(nullptr);
}

struct FormatJSON {
    JSON track;

    JSON operator()(const ZVMediaInfo::Video& video) && {
        track["type"] = "video";
        track["width"] = video.width;
        track["height"] = video.height;
        track["frames"] = video.frameCount;
        track["colorTags"] = {{"primaries", video.colorTags.primaries},
                              {"transferFunction", video.colorTags.transferFunction},
                              {"matrix", video.colorTags.matrix},
                              {"range", video.colorTags.range}};
        return std::move(track);
    }
    JSON operator()(const ZVMediaInfo::Audio& audio) && {
        track["type"] = "audio";
        track["sampleRate"] = audio.sampleRate;
        track["channels"] = audio.channelCount;
        return std::move(track);
    }
    JSON operator()(const ZVMediaInfo::Other&) && {
        track["type"] = "other";
        return std::move(track);
    }
};

JSON trackJSON(const ZVMediaInfo::Track& track) {
    const JSON common{{"type", nullptr},  // the first key, filled in by format
                      {"codec", track.codec},
                      {"begin", orNull(track.begin)},
                      {"duration", orNull(track.duration)}};
    return std::visit(FormatJSON{common}, track.format);
}

JSON inputJSON(const InputSummary& summary) {
    return {{"events", JSON(summary.events)}, {"clicks", JSON(summary.clicks)}, {"keys", summary.keys}};
}

JSON topWindowsJSON(const TopWindowSummary& summary) {
    JSON windows = JSON::array();
    for (const WindowOnTop& window : summary.windows) {
        windows.push_back({{"windowID", window.windowID},
                           {"title", orNull(window.title)},
                           {"application", orNull(window.application)},
                           {"seconds", window.seconds}});
    }
    return {{"windows", std::move(windows)}, {"secondsWithout", summary.secondsWithout}};
}

JSON fileJSON(const FileReport& file) {
    JSON json{
        {"filename", file.asset.filename}, {"type", zorvane::rawValue(file.asset.type)}, {"size", orNull(file.size)}};
    if (file.asset.related) {
        json["related"] = *file.asset.related;
    }
    if (file.media) {
        json["container"] = file.media->container;
        json["duration"] = orNull(file.media->duration);
        json["tracks"] = JSON::array();
        for (const auto& track : file.media->tracks) {
            json["tracks"].push_back(trackJSON(track));
        }
    }
    if (file.input) {
        json["input"] = inputJSON(*file.input);
    }
    if (file.topWindows) {
        json["topWindows"] = topWindowsJSON(*file.topWindows);
    }
    json["error"] = orNull(file.error);
    return json;
}

}  // namespace

std::string bundleJSON(const BundleReport& report) {
    JSON files = JSON::array();
    for (const FileReport& file : report.files) {
        files.push_back(fileJSON(file));
    }
    JSON streams = JSON::array();
    for (const StreamReport& stream : report.streams) {
        streams.push_back({{"playlist", stream.playlist},
                           {"duration", stream.duration},
                           {"segments", stream.segments},
                           {"lost", stream.lost},
                           {"ended", stream.isEnded}});
    }
    const JSON json{{"bundle", report.bundle.string()},
                    {"version", report.version},
                    {"files", std::move(files)},
                    {"streams", std::move(streams)},
                    {"unlisted", report.unlisted}};
    return json.dump(2, ' ', false, JSON::error_handler_t::replace) + "\n";
}

}  // namespace zorvane::cli
