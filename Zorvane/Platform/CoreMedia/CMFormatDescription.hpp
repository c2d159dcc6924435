// What kind of media a sample holds.
#pragma once

#include <cstdint>
#include <optional>

#include "Zorvane/Platform/AVFoundation/AVAudioFormat.hpp"

namespace zorvane {

/// Four-character codes of codecs and pixel formats.
enum class CMVideoCodecType : std::uint32_t {
    h264 = 0x61766331,  // 'avc1'
    hevc = 0x68766331,  // 'hvc1'
};

enum class CMMediaType : std::uint8_t { video, audio };

/// The size of a picture, in pixels.
struct CMVideoDimensions {
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool operator==(const CMVideoDimensions&) const = default;
};

/// Immutable; shared by all samples of a stream.
struct CMFormatDescription {
    CMMediaType mediaType = CMMediaType::video;
    std::optional<CMVideoCodecType> codec;     ///< of encoded video; absent for raw frames
    CMVideoDimensions dimensions;              ///< pixels; zero for audio
    std::optional<AVAudioFormat> audioFormat;  ///< present exactly for audio
};

}  // namespace zorvane
