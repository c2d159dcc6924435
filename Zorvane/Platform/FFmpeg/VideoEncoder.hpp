// One video encoder of the FFmpeg libraries.
#pragma once

#include <cstdint>
#include <string>

#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"
#include "Zorvane/Platform/FFmpeg/ColorConversion.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegHandles.hpp"

namespace zorvane {

/// Turns pictures into packets, without delay and without reordering: packets leave in the order of the pictures, and
/// each is both decoded and shown at its picture's tick. Ticks are those of `VideoTimeline`. Used by one thread at a
/// time. Encoding the same content again costs little.
class VideoEncoder {
  public:
    enum class PictureKind : std::uint8_t { key, any };

    /// Opens the encoder of that name. Throws `NSError`: there is no such encoder, or it can't encode this.
    VideoEncoder(const AVVideoSettings& settings, const std::string& encoderName);

    /// What to encode next; its maker fills it, and it keeps its content over calls of `encode`. Its size is that of
    /// the settings, rounded up to even numbers.
    PlanarPicture picture() const;

    /// Throws `NSError`.
    void encode(std::int64_t tick, PictureKind kind);

    /// No more pictures come: the packets that are left may be received.
    void drain();

    /// Moves the next packet into the empty `packet`; false when there is none yet. Throws `NSError`.
    bool receive(AVPacket& packet);

    /// For the file's index, with the size of the picture that is to be seen.
    FFmpegHandle<AVCodecParameters> codecParameters() const;

  private:
    void allocatePicture();

    const std::int32_t width_;
    const std::int32_t height_;
    FFmpegHandle<AVCodecContext> context_;
    FFmpegHandle<AVFrame> frame_;
};

}  // namespace zorvane
