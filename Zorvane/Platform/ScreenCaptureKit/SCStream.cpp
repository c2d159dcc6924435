#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

#include <fmt/format.h>

namespace zorvane {

std::string SCStreamConfiguration::debugDescription() const {
    return fmt::format(
        "SCStreamConfiguration[{}x{} sourceRect:{} showsCursor:{} capturesAudio:{} queueDepth:{} pixelFormat:{} "
        "colorSpaceName:{} minimumFrameInterval:{}]",
        width, height, sourceRect ? zorvane::debugDescription(*sourceRect) : "none", showsCursor, capturesAudio,
        queueDepth, pixelFormat == CVPixelFormat::bgra ? "BGRA" : "l10r",
        colorSpaceName == CGColorSpaceName::sRGB ? "sRGB" : "displayP3", minimumFrameInterval.seconds());
}

}  // namespace zorvane
