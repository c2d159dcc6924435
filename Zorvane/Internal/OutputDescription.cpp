#include "Zorvane/Internal/OutputDescription.hpp"

#include <string>
#include <utility>

namespace zorvane {
namespace {

std::string withoutExtension(std::string_view filename) {
    return std::filesystem::path(filename).replace_extension().string();
}

std::string filenamePrefix(const ZVSegmentedOutput& output, std::string_view fallbackFilename) {
    return output.filenamePrefix ? *output.filenamePrefix : withoutExtension(fallbackFilename);
}

// A leading slash doesn't lead out of the bundle.
std::string filename(const ZVSingleFileOutput& output, std::string_view fallbackFilename) {
    return std::filesystem::path(output.filename.value_or(std::string(fallbackFilename))).relative_path().string();
}

}  // namespace

OutputDescription outputDescription(const ZVOutputForm& output, const std::filesystem::path& bundleURL,
                                    std::string_view fallbackFilename) {
    if (const auto* segmented = std::get_if<ZVSegmentedOutput>(&output)) {
        auto callback = segmented->segmentCallback;
        if (!callback) {
            callback = [](const std::filesystem::path&) {};
        }
        return {OutputDescription::MultipleStreams{bundleURL, filenamePrefix(*segmented, fallbackFilename),
                                                   std::move(callback)}};
    }
    return {
        OutputDescription::SingleFile{bundleURL / filename(std::get<ZVSingleFileOutput>(output), fallbackFilename)}};
}

std::filesystem::path inputEventsURL(const ZVScreenRecordingOutputOptions& output,
                                     const std::filesystem::path& bundleURL, std::string_view fallbackFilename,
                                     std::string_view suffix) {
    const auto* segmented = std::get_if<ZVSegmentedOutput>(&output.form());
    std::string name = segmented
                           ? filenamePrefix(*segmented, fallbackFilename)
                           : withoutExtension(filename(std::get<ZVSingleFileOutput>(output.form()), fallbackFilename));
    name += '.';
    name += suffix;
    return bundleURL / name;
}

}  // namespace zorvane
