// Where a recorder's media and side files go.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <variant>

#include "Zorvane/ZVOutputOptions.hpp"

namespace zorvane {

/// What a media recorder is told of its output.
struct OutputDescription {
    struct SingleFile {
        std::filesystem::path url;
    };
    struct MultipleStreams {
        std::filesystem::path directoryURL;
        std::string filenamePrefix;
        /// Never empty.
        ZVSegmentedOutput::SegmentCallback segmentCallback;
    };

    std::variant<SingleFile, MultipleStreams> form;
};

/// The description of an output in the bundle; `fallbackFilename`, such as "display-5.mov", names what has no name.
/// Throws a `ZVError` (invalid configuration) for a name that leads out of the bundle and for the manifest's, as does
/// the function below.
OutputDescription outputDescription(const ZVOutputForm& output, const std::filesystem::path& bundleURL,
                                    std::string_view fallbackFilename);

/// The file of input events beside the media: their name with `suffix` in place of the extension,
/// "screen.input-events.json" for "screen.mov" and "input-events.json". Segments have no extension: their prefix gets
/// the suffix. With another suffix it names the other files beside the media.
std::filesystem::path inputEventsURL(const ZVScreenRecordingOutputOptions& output,
                                     const std::filesystem::path& bundleURL, std::string_view fallbackFilename,
                                     std::string_view suffix);

inline constexpr std::string_view inputEventsSuffix = "input-events.json";
inline constexpr std::string_view topWindowsSuffix = "top-windows.json";

}  // namespace zorvane
