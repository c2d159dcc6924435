#include "Zorvane/Internal/RecorderContext.hpp"

namespace zorvane {
namespace {

std::filesystem::path nameOf(const OutputDescription& output) {
    if (const auto* streams = std::get_if<OutputDescription::MultipleStreams>(&output.form)) {
        return streams->directoryURL / streams->filenamePrefix;
    }
    return std::get<OutputDescription::SingleFile>(output.form).url;
}

}  // namespace

OutputDescription RecorderContext::claimOutput(const ZVOutputForm& output, std::string_view fallbackFilename) const {
    OutputDescription description = outputDescription(output, bundleURL, fallbackFilename);
    outputNames->claim(nameOf(description));
    return description;
}

std::filesystem::path RecorderContext::claimSideFile(const ZVScreenRecordingOutputOptions& output,
                                                     std::string_view fallbackFilename, std::string_view suffix) const {
    std::filesystem::path url = inputEventsURL(output, bundleURL, fallbackFilename, suffix);
    outputNames->claim(url);
    return url;
}

}  // namespace zorvane
