#include "Zorvane/Platform/FFmpeg/AudioEncoder.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <new>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/FFmpeg/EncoderOptions.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegError.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace zorvane {
namespace {

/// A packet depends on three blocks at most, and the encoder's rate control settles in a few more.
constexpr std::int64_t blocksUntilSteady = 8;

/// The encoder ends with an error at what is no number or far too loud, and one bad sample must not end a recording.
/// There is room for 18 dB more than full scale.
float bearable(float sample) {
    constexpr float loudest = 8;
    if (sample >= -loudest && sample <= loudest) {
        return sample;
    }
    return sample > loudest ? loudest : sample < -loudest ? -loudest : 0;
}

const AVCodec& audioEncoder() {
    const AVCodec* const codec = avcodec_find_encoder_by_name("aac");
    if (!codec) {
        throw NSError(
            AVFoundationErrorDomain, AVErrorEncoderNotFound,
            {"The audio encoder aac is missing. Install FFmpeg libraries that were built with it.", nullptr, {}});
    }
    return *codec;
}

}  // namespace

AudioEncoder::AudioEncoder(const AVAudioSettings& settings)
    : format_(encodedFormat(settings)), packet_(makePacket()), silence_(makePacket()) {
    const AVCodec& codec = audioEncoder();
    context_.reset(avcodec_alloc_context3(&codec));
    if (!context_) {
        throw std::bad_alloc();
    }
    applyAudioSettings(settings, *context_);
    requireFFmpeg(avcodec_open2(context_.get(), &codec, nullptr),
                  fmt::format("encode sound of {} channels at {} Hz", format_.channelCount, format_.sampleRate));
    blockSize_ = static_cast<std::uint32_t>(context_->frame_size);
    nextTick_ = -context_->initial_padding;
    block_ = makeFrame();
    block_->format = context_->sample_fmt;
    block_->nb_samples = context_->frame_size;
    block_->sample_rate = context_->sample_rate;
    requireFFmpeg(av_channel_layout_copy(&block_->ch_layout, &context_->ch_layout), "allocate a block of sound");
    requireFFmpeg(av_frame_get_buffer(block_.get(), 0), "allocate a block of sound");
}

FFmpegHandle<AVCodecParameters> AudioEncoder::codecParameters() const {
    auto parameters = makeCodecParameters();
    requireFFmpeg(avcodec_parameters_from_context(parameters.get(), context_.get()), "describe the sound");
    return parameters;
}

void AudioEncoder::append(std::span<const float> samples, PacketSink& sink) {
    const std::size_t channels = format_.channelCount;
    while (!samples.empty()) {
        const std::size_t frames = std::min<std::size_t>(samples.size() / channels, blockSize_ - filled_);
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const std::span<float> room = plane(channel).subspan(filled_, frames);
            for (std::size_t frame = 0; frame < frames; ++frame) {
                room[frame] = bearable(samples[frame * channels + channel]);
            }
        }
        samples = samples.subspan(frames * channels);
        advance(static_cast<std::uint32_t>(frames), sink);
    }
}

void AudioEncoder::appendSilence(std::int64_t frameCount, PacketSink& sink) {
    while (frameCount > 0) {
        const auto frames = static_cast<std::uint32_t>(std::min<std::int64_t>(frameCount, blockSize_ - filled_));
        for (std::size_t channel = 0; channel < format_.channelCount; ++channel) {
            std::ranges::fill(plane(channel).subspan(filled_, frames), 0.0F);
        }
        frameCount -= frames;
        advance(frames, sink);
    }
}

void AudioEncoder::drain(PacketSink& sink) {
    if (filled_ > 0) {
        block_->nb_samples = static_cast<int>(filled_);
        block_->pts = encodedFrames_;
        send(block_.get(), sink);
    }
    send(nullptr, sink);
}

std::span<float> AudioEncoder::plane(std::size_t channel) const {
    return {reinterpret_cast<float*>(block_->extended_data[channel]), blockSize_};
}

void AudioEncoder::advance(std::uint32_t frames, PacketSink& sink) {
    filled_ += frames;
    frameCount_ += frames;
    if (filled_ == blockSize_) {
        encodeBlock(sink);
        filled_ = 0;
    }
}

void AudioEncoder::encodeBlock(PacketSink& sink) {
    silentBlocks_ = isBlockSilent() ? silentBlocks_ + 1 : 0;
    if (silentBlocks_ > blocksUntilSteady) {
        requireFFmpeg(av_packet_ref(packet_.get(), silence_.get()), "encode silence");
        emit(sink);
        return;
    }
    block_->pts = encodedFrames_;
    encodedFrames_ += blockSize_;
    send(block_.get(), sink);
}

bool AudioEncoder::isBlockSilent() const {
    for (std::size_t channel = 0; channel < format_.channelCount; ++channel) {
        if (!std::ranges::all_of(plane(channel), [](float sample) { return sample == 0; })) {
            return false;
        }
    }
    return true;
}

void AudioEncoder::send(AVFrame* block, PacketSink& sink) {
    requireFFmpeg(avcodec_send_frame(context_.get(), block), "encode sound");
    for (;;) {
        const int result = avcodec_receive_packet(context_.get(), packet_.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
            return;
        }
        requireFFmpeg(result, "encode sound");
        if (silentBlocks_ == blocksUntilSteady) {
            av_packet_unref(silence_.get());
            requireFFmpeg(av_packet_ref(silence_.get(), packet_.get()), "encode silence");
        }
        emit(sink);
    }
}

// The ticks are counted here: the encoder doesn't know of the packets that were given out again. What it says of
// samples to skip is what the packets' ticks and durations say too.
void AudioEncoder::emit(PacketSink& sink) {
    av_packet_free_side_data(packet_.get());
    packet_->pts = nextTick_;
    packet_->dts = nextTick_;
    packet_->duration = std::min<std::int64_t>(blockSize_, frameCount_ - nextTick_);
    nextTick_ += blockSize_;
    sink.append(*packet_);
}

}  // namespace zorvane
