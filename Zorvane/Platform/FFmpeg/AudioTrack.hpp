// The way of sound from samples to packets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVAudioConverter.hpp"
#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"
#include "Zorvane/Platform/FFmpeg/AudioEncoder.hpp"
#include "Zorvane/Platform/FFmpeg/AudioTimeline.hpp"
#include "Zorvane/Platform/FFmpeg/MediaTrack.hpp"

namespace zorvane {

/// Sound of any format, which may change from one sample to the next, becomes one row of frames without a hole, which
/// is encoded: where there is none, silence stands in its place. A session with an end has a track of exactly its
/// length, though there was no sound at all. Allocates nothing per sample on its own account.
class AudioTrack final : public MediaTrack {
  public:
    explicit AudioTrack(const AVAudioSettings& settings);

    MediaTrackFormat format() const override;
    void startSession(CMTime time) override { timeline_.startAt(time); }
    void endSession(CMTime time) override { timeline_.endAt(time); }
    std::optional<std::int64_t> endTick() const override { return timeline_.endFrame(); }
    void append(const CMSampleBuffer& sample, PacketSink& sink) override;
    void drain(PacketSink& sink) override;

  private:
    void changeSource(const AVAudioFormat& format, PacketSink& sink);
    void finishRun(std::int64_t runEnd, PacketSink& sink);
    void convert(std::span<const std::byte> sound, std::int64_t end, PacketSink& sink);
    void convertPiece(std::span<const std::byte> piece, std::int64_t end, PacketSink& sink);
    void encode(std::span<const float> samples, std::int64_t end, PacketSink& sink);
    void fillUntil(std::int64_t end, PacketSink& sink);
    std::int64_t clipped(std::int64_t end) const;

    AudioEncoder encoder_;
    AudioTimeline timeline_;
    std::optional<AVAudioFormat> source_;
    std::unique_ptr<AVAudioConverter> converter_;  // where the source's format is not the encoder's
    std::vector<float> converted_;
    std::vector<std::byte> silence_;  // a piece of the source's format
};

}  // namespace zorvane
