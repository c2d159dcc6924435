// The AAC encoder of the FFmpeg libraries.
#pragma once

#include <cstdint>
#include <span>

#include "Zorvane/Platform/AVFoundation/AVAudioFormat.hpp"
#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"
#include "Zorvane/Platform/FFmpeg/MediaFile.hpp"

namespace zorvane {

/// Turns an unbroken row of sound into packets, of which the ticks are frames: the first packet begins before 0 by the
/// encoder's padding, and the last ends with the last frame. Used by one thread at a time; errors are `NSError`s.
///
/// Silence costs next to nothing: once its packets can't differ any more, the last one is given out again.
class AudioEncoder {
  public:
    /// Rate and channels are those of `encodedFormat(settings)`.
    explicit AudioEncoder(const AVAudioSettings& settings);

    /// What is encoded.
    const AVAudioFormat& format() const { return format_; }
    FFmpegHandle<AVCodecParameters> codecParameters() const;

    /// How much has been appended.
    std::int64_t frameCount() const { return frameCount_; }

    /// `samples` are interleaved, whole frames.
    void append(std::span<const float> samples, PacketSink& sink);
    void appendSilence(std::int64_t frameCount, PacketSink& sink);

    /// No more sound comes: hands over the packets that are left.
    void drain(PacketSink& sink);

  private:
    std::span<float> plane(std::size_t channel) const;
    void advance(std::uint32_t frames, PacketSink& sink);
    void encodeBlock(PacketSink& sink);
    bool isBlockSilent() const;
    void send(AVFrame* frame, PacketSink& sink);
    void emit(PacketSink& sink);

    FFmpegHandle<AVCodecContext> context_;
    AVAudioFormat format_;
    std::uint32_t blockSize_ = 0;
    FFmpegHandle<AVFrame> block_;
    std::uint32_t filled_ = 0;  // frames of the block
    FFmpegHandle<AVPacket> packet_;
    FFmpegHandle<AVPacket> silence_;  // a packet between silent ones
    std::int64_t silentBlocks_ = 0;   // in a row
    std::int64_t encodedFrames_ = 0;  // by the encoder's count
    std::int64_t frameCount_ = 0;
    std::int64_t nextTick_ = 0;
};

}  // namespace zorvane
