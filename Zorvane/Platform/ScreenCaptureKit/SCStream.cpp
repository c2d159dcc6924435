#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

#include <fmt/format.h>

#include <utility>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {

std::exception_ptr makeStreamError(SCStreamErrorCode code, std::string localizedDescription) {
    return std::make_exception_ptr(NSError(SCStreamErrorDomain, static_cast<std::int64_t>(code),
                                           {.localizedDescription = std::move(localizedDescription)}));
}

std::string SCStreamConfiguration::debugDescription() const {
    return fmt::format(
        "SCStreamConfiguration[{}x{} sourceRect:{} showsCursor:{} capturesAudio:{} queueDepth:{} pixelFormat:{} "
        "colorSpaceName:{} minimumFrameInterval:{}]",
        width, height, sourceRect ? zorvane::debugDescription(*sourceRect) : "none", showsCursor, capturesAudio,
        queueDepth, pixelFormat == CVPixelFormat::bgra ? "BGRA" : "l10r",
        colorSpaceName == CGColorSpaceName::sRGB ? "sRGB" : "displayP3", minimumFrameInterval.seconds());
}

}  // namespace zorvane
