#include "Zorvane/Platform/FFmpeg/AudioTrack.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Zorvane/Platform/FFmpeg/FFmpegAudioConverter.hpp"

namespace zorvane {
namespace {

/// Sound is converted in pieces of so many frames of its source.
constexpr std::size_t pieceFrames = 1024;

constexpr std::int64_t noEnd = std::numeric_limits<std::int64_t>::max();

std::int32_t wholeRate(double sampleRate) {
    return static_cast<std::int32_t>(std::lround(sampleRate));
}

}  // namespace

AudioTrack::AudioTrack(const AVAudioSettings& settings)
    : encoder_(settings), timeline_(wholeRate(encoder_.format().sampleRate)) {}

MediaTrackFormat AudioTrack::format() const {
    return {encoder_.codecParameters(), wholeRate(encoder_.format().sampleRate)};
}

void AudioTrack::append(const CMSampleBuffer& sample, PacketSink& sink) {
    const auto& sound = sample.audioBuffer();
    if (!sound || sound->frameLength() == 0) {
        return;
    }
    if (source_ != sound->format()) {
        changeSource(sound->format(), sink);
    }
    const std::int64_t runEnd = timeline_.runEnd();
    const AudioTimeline::Place place = timeline_.place(sample.presentationTimeStamp(), sound->frameLength());
    if (place.runBegin) {
        finishRun(runEnd, sink);
        fillUntil(*place.runBegin, sink);
    }
    const std::size_t frameSize = source_->bytesPerFrame();
    convert(sound->bytes().subspan(place.skipped * frameSize, place.taken * frameSize), noEnd, sink);
}

void AudioTrack::drain(PacketSink& sink) {
    finishRun(timeline_.runEnd(), sink);
    fillUntil(timeline_.endFrame().value_or(0), sink);
    encoder_.drain(sink);
}

void AudioTrack::changeSource(const AVAudioFormat& format, PacketSink& sink) {
    finishRun(timeline_.runEnd(), sink);
    timeline_.changeRate(wholeRate(format.sampleRate));
    source_ = format;
    converter_.reset();
    if (format != encoder_.format()) {
        converter_ = FFmpegAudioConverting().makeConverter(format, encoder_.format(), AVAudioConverting::Rate::fixed);
        const auto piece = std::ceil(pieceFrames * encoder_.format().sampleRate / format.sampleRate);
        converted_.resize((static_cast<std::size_t>(piece) + 1) * encoder_.format().channelCount);
        silence_.assign(pieceFrames * format.bytesPerFrame(), std::byte{0});
    }
}

// What the converter holds comes out when it is given as much silence.
void AudioTrack::finishRun(std::int64_t runEnd, PacketSink& sink) {
    if (converter_) {
        auto held = static_cast<std::size_t>(std::ceil(converter_->heldFrames()));
        while (held > 0) {
            const std::size_t frames = std::min(held, pieceFrames);
            convert(std::span(silence_).first(frames * source_->bytesPerFrame()), runEnd, sink);
            held -= frames;
        }
        converter_->reset();
    }
    fillUntil(runEnd, sink);
}

void AudioTrack::convert(std::span<const std::byte> sound, std::int64_t end, PacketSink& sink) {
    if (!converter_) {
        encode({reinterpret_cast<const float*>(sound.data()), sound.size() / sizeof(float)}, end, sink);
        return;
    }
    const std::size_t pieceSize = pieceFrames * source_->bytesPerFrame();
    while (!sound.empty()) {
        convertPiece(sound.first(std::min(sound.size(), pieceSize)), end, sink);
        sound = sound.subspan(std::min(sound.size(), pieceSize));
    }
}

void AudioTrack::convertPiece(std::span<const std::byte> piece, std::int64_t end, PacketSink& sink) {
    const std::size_t channels = encoder_.format().channelCount;
    std::size_t samples = 0;
    do {
        samples = converter_->convert(piece, std::as_writable_bytes(std::span(converted_))) * channels;
        encode(std::span(converted_).first(samples), end, sink);
        piece = {};
    } while (samples == converted_.size());
}

void AudioTrack::encode(std::span<const float> samples, std::int64_t end, PacketSink& sink) {
    const std::size_t channels = encoder_.format().channelCount;
    const std::int64_t room = std::max<std::int64_t>(clipped(end) - encoder_.frameCount(), 0);
    const auto frames = std::min(static_cast<std::int64_t>(samples.size() / channels), room);
    encoder_.append(samples.first(static_cast<std::size_t>(frames) * channels), sink);
}

void AudioTrack::fillUntil(std::int64_t end, PacketSink& sink) {
    encoder_.appendSilence(clipped(end) - encoder_.frameCount(), sink);
}

std::int64_t AudioTrack::clipped(std::int64_t end) const {
    return std::min(end, timeline_.endFrame().value_or(noEnd));
}

}  // namespace zorvane
