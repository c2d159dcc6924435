// The colour mode of a screen recording, and everything that it decides.
#pragma once

#include <cstdint>

#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"
#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"
#include "Zorvane/ZVColorSpace.hpp"

namespace zorvane {

/// `sRGB` records H.264 in 8 bits, `displayP3` HEVC in 10 bits with wide primaries.
enum class RecordMode : std::uint8_t { sRGB, displayP3 };

/// The mode of the same name.
RecordMode recordModeFor(ZVColorSpace colorSpace);

/// The largest picture that a mode encodes, in pixels.
CMVideoDimensions outputLimit(RecordMode mode);

AVOutputSettingsPreset settingsPreset(RecordMode mode);
CMVideoCodecType videoCodecType(RecordMode mode);
CVPixelFormat streamPixelFormat(RecordMode mode);
CGColorSpaceName streamColorSpace(RecordMode mode);

/// What the file says of its colours: only the primaries differ between the modes.
AVVideoColorProperties videoColorProperties(RecordMode mode);

/// The size of the encoded picture: `source` (points) at `scaleFactor`, shrunk with its aspect ratio to the mode's
/// limit where it exceeds it. Sides are truncated to whole pixels, and not rounded to even numbers.
CMVideoDimensions downsizedVideoSize(CGSize source, int scaleFactor, RecordMode mode);

}  // namespace zorvane
