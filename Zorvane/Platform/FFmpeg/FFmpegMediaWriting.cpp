#include "Zorvane/Platform/FFmpeg/FFmpegMediaWriting.hpp"

#include <utility>

#include "Zorvane/Platform/FFmpeg/FFmpegLog.hpp"
#include "Zorvane/Platform/FFmpeg/OutputSettingsPresets.hpp"
#include "Zorvane/Platform/Foundation/OutputFile.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {
namespace {

FFmpegWriterParts completed(FFmpegWriterParts parts) {
    if (!parts.makeFile) {
        parts.makeFile = makeOutputFile;
    }
    return parts;
}

}  // namespace

FFmpegMediaWriting::FFmpegMediaWriting(FFmpegWriterParts parts) : parts_(completed(std::move(parts))) {
    silenceFFmpegLog();
}

std::unique_ptr<AVOutputSettingsAssistant> FFmpegMediaWriting::makeOutputSettingsAssistant(
    AVOutputSettingsPreset preset) {
    return std::make_unique<PresetSettingsAssistant>(preset);
}

std::shared_ptr<AVAssetWriter> FFmpegMediaWriting::makeAssetWriter(const std::filesystem::path& url,
                                                                   AVFileType fileType) {
    return std::make_shared<FFmpegAssetWriter>(url, fileType, partsOfNow());
}

std::shared_ptr<AVAssetWriter> FFmpegMediaWriting::makeSegmentWriter(AVAssetSegmenting segmenting) {
    return std::make_shared<FFmpegAssetWriter>(std::move(segmenting), partsOfNow());
}

FFmpegWriterParts FFmpegMediaWriting::partsOfNow() const {
    FFmpegWriterParts parts = parts_;
    if (!parts.clock) {
        parts.clock = Platform::current()->clock;
    }
    return parts;
}

}  // namespace zorvane
