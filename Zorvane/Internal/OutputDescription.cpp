#include "Zorvane/Internal/OutputDescription.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>

#include "Zorvane/Internal/BundleDirectory.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

/// A leading slash doesn't lead out of the bundle, and nothing else may.
std::string insideBundle(const std::filesystem::path& name) {
    if (std::ranges::find(name, "..") != name.end()) {
        throw ZVError::invalidConfiguration(fmt::format("\"{}\" names a file outside of the bundle.", name.native()));
    }
    return name.relative_path().string();
}

std::string withoutExtension(std::string_view filename) {
    return std::filesystem::path(filename).replace_extension().string();
}

std::string filenamePrefix(const ZVSegmentedOutput& output, std::string_view fallbackFilename) {
    return insideBundle(output.filenamePrefix ? *output.filenamePrefix : withoutExtension(fallbackFilename));
}

std::string filename(const ZVSingleFileOutput& output, std::string_view fallbackFilename) {
    std::string name = insideBundle(output.filename.value_or(std::string(fallbackFilename)));
    if (std::filesystem::path(name).lexically_normal() == manifestFilename) {
        throw ZVError::invalidConfiguration(
            fmt::format("\"{}\" is the name of the bundle's manifest. Give the source another one.", manifestFilename));
    }
    return name;
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
