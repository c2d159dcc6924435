// How media is encoded, and the presets that say so.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "Zorvane/Platform/CoreMedia/CMFormatDescription.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

enum class AVVideoTransferFunction : std::uint8_t { ituR709_2 };
enum class AVVideoColorPrimaries : std::uint8_t { ituR709_2, p3D65 };
enum class AVVideoYCbCrMatrix : std::uint8_t { ituR709_2 };

/// What the file says of its colours, and what the pixels are converted with.
struct AVVideoColorProperties {
    AVVideoTransferFunction transferFunction = AVVideoTransferFunction::ituR709_2;
    AVVideoColorPrimaries primaries = AVVideoColorPrimaries::ituR709_2;
    AVVideoYCbCrMatrix matrix = AVVideoYCbCrMatrix::ituR709_2;
    bool operator==(const AVVideoColorProperties&) const = default;
};

/// How hard the encoder works for its size.
enum class AVVideoEncodingEffort : std::uint8_t {
    realTime,  ///< the least, for screens, of which little changes from picture to picture
    balanced,  ///< half as much again for 3 dB, for cameras, whose noise changes everywhere
};

struct AVVideoCompressionProperties {
    bool allowFrameReordering = true;
    AVVideoEncodingEffort effort = AVVideoEncodingEffort::realTime;
    /// Constant quality on the encoder's own scale, where lower is better. Absent: the encoder's default.
    std::optional<double> constantQuality;
    /// Bits that any second may take, but for the first. Where pictures would take more, their quality is less; all
    /// others have the constant one, on average over pictures and their parts. Absent: no bound, the same everywhere.
    std::optional<std::int64_t> maxBitRate;
    /// Pictures a second that the encoder plans with; what their times say holds. Absent: 60.
    std::optional<double> expectedSourceFrameRate;
    /// Longest time between two key frames, in seconds.
    double maxKeyFrameIntervalDuration = 5;
};

struct AVVideoSettings {
    CMVideoCodecType codec = CMVideoCodecType::h264;
    std::int32_t width = 0;  ///< pixels of the encoded picture; incoming pictures are scaled to it
    std::int32_t height = 0;
    /// Absent: the pictures' own, which must be '420v' then, of ITU-R 709 primaries and transfer and the matrix of 601.
    std::optional<AVVideoColorProperties> colorProperties = AVVideoColorProperties{};
    AVVideoCompressionProperties compressionProperties;
};

enum class AVAudioCodec : std::uint8_t { aac };

struct AVAudioSettings {
    AVAudioCodec codec = AVAudioCodec::aac;
    double sampleRate = 48000;
    std::optional<std::int32_t> numberOfChannels;
    std::int32_t bitRate = 160000;  ///< bits per second, all channels
};

enum class AVOutputSettingsPreset : std::uint8_t { h264_1920x1080, h264_3840x2160, hevc_7680x4320 };

/// Gives encoder settings for a preset. Used by one thread at a time.
class AVOutputSettingsAssistant {
  public:
    virtual ~AVOutputSettingsAssistant() = default;

    /// What the source video is like, for settings that depend on it. Raw pictures are those of a camera.
    virtual void setSourceVideoFormat(const CMFormatDescription& format) = 0;

    /// The shortest time from picture to picture of the source. Numeric.
    virtual void setSourceVideoMinFrameDuration(CMTime) {}

    /// What the source sound is like. The settings keep its rate where the codec has it, and its channels.
    virtual void setSourceAudioFormat(const CMFormatDescription&) {}

    /// Nothing when the preset has no such media.
    virtual std::optional<AVAudioSettings> audioSettings() const = 0;
    virtual std::optional<AVVideoSettings> videoSettings() const = 0;
};

}  // namespace zorvane
