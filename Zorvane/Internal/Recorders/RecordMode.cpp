#include "Zorvane/Internal/Recorders/RecordMode.hpp"

#include <algorithm>

namespace zorvane {

RecordMode recordModeFor(ZVColorSpace colorSpace) {
    return colorSpace == ZVColorSpace::displayP3 ? RecordMode::displayP3 : RecordMode::sRGB;
}

CMVideoDimensions outputLimit(RecordMode mode) {
    return mode == RecordMode::sRGB ? CMVideoDimensions{4096, 2304} : CMVideoDimensions{7680, 4320};
}

AVOutputSettingsPreset settingsPreset(RecordMode mode) {
    return mode == RecordMode::sRGB ? AVOutputSettingsPreset::h264_3840x2160 : AVOutputSettingsPreset::hevc_7680x4320;
}

CMVideoCodecType videoCodecType(RecordMode mode) {
    return mode == RecordMode::sRGB ? CMVideoCodecType::h264 : CMVideoCodecType::hevc;
}

CVPixelFormat streamPixelFormat(RecordMode mode) {
    return mode == RecordMode::sRGB ? CVPixelFormat::bgra : CVPixelFormat::l10r;
}

CGColorSpaceName streamColorSpace(RecordMode mode) {
    return mode == RecordMode::sRGB ? CGColorSpaceName::sRGB : CGColorSpaceName::displayP3;
}

AVVideoColorProperties videoColorProperties(RecordMode mode) {
    return {.transferFunction = AVVideoTransferFunction::ituR709_2,
            .primaries = mode == RecordMode::sRGB ? AVVideoColorPrimaries::ituR709_2 : AVVideoColorPrimaries::p3D65,
            .matrix = AVVideoYCbCrMatrix::ituR709_2};
}

CMVideoDimensions downsizedVideoSize(CGSize source, int scaleFactor, RecordMode mode) {
    const CMVideoDimensions limit = outputLimit(mode);
    const CGSize scaled{source.width * scaleFactor, source.height * scaleFactor};
    const double ratio = std::max({scaled.width / limit.width, scaled.height / limit.height, 1.0});
    return {static_cast<std::int32_t>(scaled.width / ratio), static_cast<std::int32_t>(scaled.height / ratio)};
}

}  // namespace zorvane
