#include "Zorvane/Platform/FFmpeg/FFmpegAudioConverter.hpp"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <exception>
#include <limits>
#include <numbers>
#include <string>
#include <string_view>
#include <utility>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegError.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegHandles.hpp"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace zorvane {
namespace {

constexpr std::uint32_t maximumChannels = 8;

/// The resampler between equal rates: level up to 21 kHz within 0.02 dB, everything it adds below -120 dB, for four
/// microseconds per 10 ms of stereo. docs/design/sound.md has the figures of other sizes.
constexpr int filterTaps = 64;
constexpr int kaiserBeta = 12;

/// Rows of gains, one per output channel, with a gain for each input channel.
using MixMatrix = std::array<double, std::size_t{maximumChannels} * maximumChannels>;

AVSampleFormat sampleFormat(AVAudioCommonFormat format) {
    switch (format) {
        case AVAudioCommonFormat::int16:
            return AV_SAMPLE_FMT_S16;
        case AVAudioCommonFormat::int32:
            return AV_SAMPLE_FMT_S32;
        case AVAudioCommonFormat::float32:
            return AV_SAMPLE_FMT_FLT;
    }
    return AV_SAMPLE_FMT_NONE;
}

std::string described(const AVAudioFormat& format) {
    constexpr std::array<std::string_view, 3> types = {"int16", "int32", "float32"};
    return fmt::format("{} channels of {} at {} Hz", format.channelCount,
                       types.at(static_cast<std::size_t>(format.commonFormat)), format.sampleRate);
}

bool isUsable(const AVAudioFormat& format) {
    return format.channelCount >= 1 && format.channelCount <= maximumChannels && format.sampleRate >= 1 &&
           format.sampleRate <= std::numeric_limits<int>::max() && format.sampleRate == std::floor(format.sampleRate);
}

AVChannelLayout usualLayout(std::uint32_t channels) {
    AVChannelLayout layout;
    av_channel_layout_default(&layout, static_cast<int>(channels));
    return layout;
}

/// Gains of the speakers that the output lacks, spread over those that it has, without making room for their sum.
MixMatrix loudspeakerMix(std::uint32_t from, std::uint32_t to) {
    constexpr double halfPower = std::numbers::sqrt2 / 2;
    constexpr double noLowFrequencyEffects = 0;
    const AVChannelLayout source = usualLayout(from);
    const AVChannelLayout output = usualLayout(to);
    MixMatrix matrix{};
    requireFFmpeg(swr_build_matrix2(&source, &output, halfPower, halfPower, noLowFrequencyEffects,
                                    std::numeric_limits<int>::max(), 1, matrix.data(), maximumChannels,
                                    AV_MATRIX_ENCODING_NONE, nullptr),
                  "mix channels");
    return matrix;
}

/// The mean of left and right: what is in both keeps its level.
MixMatrix monoMix(std::uint32_t from) {
    MixMatrix matrix = from == 2 ? MixMatrix{} : loudspeakerMix(from, 2);
    if (from == 2) {
        matrix[0] = matrix[maximumChannels + 1] = 1;
    }
    for (std::uint32_t channel = 0; channel < from; ++channel) {
        matrix[channel] = (matrix[channel] + matrix[maximumChannels + channel]) / 2;
    }
    return matrix;
}

MixMatrix mix(std::uint32_t from, std::uint32_t to) {
    if (from == 1) {
        MixMatrix matrix;
        matrix.fill(1);
        return matrix;
    }
    return to == 1 ? monoMix(from) : loudspeakerMix(from, to);
}

void setOption(SwrContext* context, const char* name, std::int64_t value) {
    requireFFmpeg(av_opt_set_int(context, name, value, 0), fmt::format("set the resampler's {}", name));
}

/// Between two phases of the filter its taps are interpolated, without which their distance is heard as noise at
/// -65 dB.
void setFilter(SwrContext* context, AVAudioConverting::Rate rate) {
    setOption(context, "filter_size", filterTaps);
    setOption(context, "kaiser_beta", kaiserBeta);
    if (rate == AVAudioConverting::Rate::adjustable) {
        setOption(context, "flags", SWR_FLAG_RESAMPLE);
        setOption(context, "linear_interp", 1);
        setOption(context, "exact_rational", 0);
    }
}

FFmpegHandle<SwrContext> makeContext(const AVAudioFormat& from, const AVAudioFormat& to, AVAudioConverting::Rate rate) {
    AVChannelLayout source = usualLayout(from.channelCount);
    AVChannelLayout output = usualLayout(to.channelCount);
    SwrContext* made = nullptr;
    const int result =
        swr_alloc_set_opts2(&made, &output, sampleFormat(to.commonFormat), static_cast<int>(to.sampleRate), &source,
                            sampleFormat(from.commonFormat), static_cast<int>(from.sampleRate), 0, nullptr);
    FFmpegHandle<SwrContext> context(made);
    requireFFmpeg(result, "make a sound converter");
    const bool resamples = rate == AVAudioConverting::Rate::adjustable || from.sampleRate != to.sampleRate;
    const bool mixes = from.channelCount != to.channelCount;
    if (resamples || mixes) {
        // By itself it would reckon 16-bit sound in 16 bits.
        requireFFmpeg(av_opt_set_sample_fmt(made, "internal_sample_fmt", AV_SAMPLE_FMT_FLTP, 0), "set a sample format");
    }
    if (resamples) {
        setFilter(made, rate);
    }
    if (mixes) {
        const MixMatrix matrix = mix(from.channelCount, to.channelCount);
        requireFFmpeg(swr_set_matrix(made, matrix.data(), maximumChannels), "mix channels");
    }
    return context;
}

class FFmpegAudioConverter final : public AVAudioConverter {
  public:
    FFmpegAudioConverter(const AVAudioFormat& from, const AVAudioFormat& to, AVAudioConverting::Rate rate)
        : from_(from), to_(to), context_(makeContext(from, to, rate)) {
        requireFFmpeg(swr_init(context_.get()), "begin to convert sound");
    }

    std::size_t convert(std::span<const std::byte> input, std::span<std::byte> output) override {
        // No input pointer would mean the end of the stream.
        const auto* source = reinterpret_cast<const std::uint8_t*>(input.empty() ? &nothing_ : input.data());
        auto* target = reinterpret_cast<std::uint8_t*>(output.data());
        const auto offered = static_cast<int>(input.size() / from_.bytesPerFrame());
        const auto room = static_cast<int>(output.size() / to_.bytesPerFrame());
        return static_cast<std::size_t>(
            requireFFmpeg(swr_convert(context_.get(), &target, room, &source, offered), "convert sound"));
    }

    void setRateDeviation(double deviation) override {
        // So many frames of output that they last beyond the next call.
        constexpr int distance = 1 << 30;
        requireFFmpeg(
            swr_set_compensation(context_.get(), static_cast<int>(std::lround(-deviation * distance)), distance),
            "steer the rate of sound");
    }

    double heldFrames() const override {
        constexpr std::int64_t parts = 1 << 16;
        const auto delay = swr_get_delay(context_.get(), static_cast<std::int64_t>(from_.sampleRate) * parts);
        return static_cast<double>(delay) / parts;
    }

    void reset() override {
        swr_close(context_.get());
        requireFFmpeg(swr_init(context_.get()), "begin to convert sound anew");
    }

  private:
    const AVAudioFormat from_;
    const AVAudioFormat to_;
    const std::byte nothing_{};
    FFmpegHandle<SwrContext> context_;
};

}  // namespace

std::unique_ptr<AVAudioConverter> FFmpegAudioConverting::makeConverter(const AVAudioFormat& from,
                                                                       const AVAudioFormat& to, Rate rate) {
    const auto refusal = [&](std::exception_ptr reason) {
        return NSError(AVFoundationErrorDomain, AVErrorUnknown,
                       {fmt::format("Unable to convert sound from {} to {}.", described(from), described(to)),
                        std::move(reason),
                        {}});
    };
    if (!isUsable(from) || !isUsable(to)) {
        throw refusal(nullptr);
    }
    try {
        return std::make_unique<FFmpegAudioConverter>(from, to, rate);
    } catch (const NSError&) {
        throw refusal(std::current_exception());
    }
}

}  // namespace zorvane
