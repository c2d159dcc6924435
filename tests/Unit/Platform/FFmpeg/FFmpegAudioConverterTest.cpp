#include "Zorvane/Platform/FFmpeg/FFmpegAudioConverter.hpp"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::FloatNear;
using ::testing::Pointwise;
using enum AVAudioConverting::Rate;
using enum AVAudioCommonFormat;

std::unique_ptr<AVAudioConverter> converter(const AVAudioFormat& from, const AVAudioFormat& to,
                                            AVAudioConverting::Rate rate = fixed) {
    return FFmpegAudioConverting().makeConverter(from, to, rate);
}

/// What comes out of `samples` with room for `room` samples.
template <class Out = float, class In>
std::vector<Out> converted(AVAudioConverter& converter, const std::vector<In>& samples, const AVAudioFormat& to,
                           std::size_t room = 1 << 16) {
    std::vector<Out> output(room);
    const std::size_t frames =
        converter.convert(std::as_bytes(std::span(samples)), std::as_writable_bytes(std::span(output)));
    output.resize(frames * to.channelCount);
    return output;
}

/// One frame through a converter of channels.
std::vector<float> mixed(const std::vector<float>& frame, std::uint32_t channels) {
    const AVAudioFormat from{float32, 48000, static_cast<std::uint32_t>(frame.size())};
    const AVAudioFormat to{float32, 48000, channels};
    return converted(*converter(from, to), frame, to);
}

std::vector<float> sine(double frequency, double rate, std::size_t frames, float level = 0.5F) {
    std::vector<float> samples(frames);
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const double angle = 2 * std::numbers::pi * frequency * static_cast<double>(frame) / rate;
        samples[frame] = level * static_cast<float>(std::sin(angle));
    }
    return samples;
}

TEST(FFmpegAudioConverterTest, SampleTypesKeepTheirLevelAndAreCutAtTheirLimits) {
    const AVAudioFormat from{float32, 48000, 1};
    const std::vector<float> samples = {0.5F, -0.25F, 1.5F, -1.5F};
    const AVAudioFormat int16Format{int16, 48000, 1};
    EXPECT_THAT(converted<std::int16_t>(*converter(from, int16Format), samples, int16Format),
                ElementsAre(16384, -8192, 32767, -32768));
    const AVAudioFormat int32Format{int32, 48000, 1};
    EXPECT_THAT(converted<std::int32_t>(*converter(from, int32Format), samples, int32Format),
                ElementsAre(1 << 30, -(1 << 29), std::numeric_limits<std::int32_t>::max(),
                            std::numeric_limits<std::int32_t>::min()));
    const std::vector<std::int16_t> integers = {16384, -32768};
    EXPECT_THAT(converted(*converter(int16Format, from), integers, from), ElementsAre(0.5F, -1.0F));
}

TEST(FFmpegAudioConverterTest, ChannelsAreMixedAsLoudspeakersWouldAndNoLevelIsLowered) {
    EXPECT_THAT(mixed({0.8F}, 2), ElementsAre(0.8F, 0.8F));
    EXPECT_THAT(mixed({0.8F}, 6), ElementsAre(0.8F, 0.8F, 0.8F, 0.8F, 0.8F, 0.8F));
    EXPECT_THAT(mixed({0.8F, 0.8F}, 1), ElementsAre(FloatNear(0.8F, 1e-6F)));
    EXPECT_THAT(mixed({0.8F, 0}, 1), ElementsAre(FloatNear(0.4F, 1e-6F)));
    // Front left and right, centre, effects, surround left and right.
    EXPECT_THAT(mixed({0.8F, 0.4F, 0, 0, 0, 0}, 2), ElementsAre(0.8F, 0.4F));
    EXPECT_THAT(mixed({0, 0, 0.8F, 0.9F, 0, 0}, 2), Pointwise(FloatNear(1e-5F), {0.565685F, 0.565685F}));
    EXPECT_THAT(mixed({1, 1, 1, 0, 1, 1}, 2), Pointwise(FloatNear(1e-5F), {2.414214F, 2.414214F}));
    EXPECT_THAT(mixed({0.8F, 0.8F, 0, 0, 0, 0}, 1), ElementsAre(FloatNear(0.8F, 1e-6F)));
    EXPECT_THAT(mixed({0.3F, 0.4F}, 6), ElementsAre(0.3F, 0.4F, 0, 0, 0, 0));
}

TEST(FFmpegAudioConverterTest, AFixedConverterBetweenEqualRatesHoldsNothingBack) {
    const AVAudioFormat from{int16, 44100, 1};
    const AVAudioFormat to{float32, 44100, 2};
    const auto fixedConverter = converter(from, to);
    EXPECT_THAT(converted(*fixedConverter, std::vector<std::int16_t>{16384}, to), ElementsAre(0.5F, 0.5F));
    EXPECT_EQ(fixedConverter->heldFrames(), 0);
}

TEST(FFmpegAudioConverterTest, WhatDoesNotFitComesFirstTheNextTime) {
    for (const AVAudioConverting::Rate rate : {fixed, adjustable}) {
        const AVAudioFormat format{float32, 48000, 1};
        const std::vector<float> input = sine(440, 48000, 960);
        const std::vector<float> whole = converted(*converter(format, format, rate), input, format);

        const auto stepwise = converter(format, format, rate);
        std::vector<float> joined = converted(*stepwise, input, format, 100);
        EXPECT_EQ(joined.size(), 100U);
        EXPECT_NEAR(stepwise->heldFrames(), 860, 1e-4);
        while (true) {
            const std::vector<float> more = converted(*stepwise, std::vector<float>{}, format, 250);
            if (more.empty()) {
                break;
            }
            joined.insert(joined.end(), more.begin(), more.end());
        }
        EXPECT_EQ(joined, whole);
    }
}

TEST(FFmpegAudioConverterTest, FramesComeOutWhereTheHeldOnesSay) {
    for (const double rate : {44100.0, 48000.0, 96000.0}) {
        const AVAudioFormat from{float32, rate, 1};
        const AVAudioFormat to{float32, 48000, 1};
        const auto resampler = converter(from, to, adjustable);
        resampler->setRateDeviation(0.005);
        const std::vector<float> input = sine(1000, rate, 9600);
        const std::vector<float> output = converted(*resampler, input, to);
        const double step = (9600 - resampler->heldFrames()) / static_cast<double>(output.size());
        EXPECT_NEAR(step, rate / 48000 * 1.005, 2e-6 * rate / 48000);
        double worst = 0;
        for (std::size_t frame = 100; frame < output.size(); ++frame) {
            const double angle = 2 * std::numbers::pi * 1000 / rate * step * static_cast<double>(frame);
            worst = std::max(worst, std::abs(output[frame] - 0.5 * std::sin(angle)));
        }
        EXPECT_LT(worst, 1e-5) << rate;  // a tenth of a frame off would be 0.0065
    }
}

TEST(FFmpegAudioConverterTest, ResetForgetsWhatIsHeld) {
    const AVAudioFormat format{float32, 48000, 2};
    const AVAudioFormat mono{float32, 48000, 1};
    const auto resampler = converter(format, mono, adjustable);
    converted(*resampler, std::vector<float>(960, 1.0F), mono);
    EXPECT_GT(resampler->heldFrames(), 0);
    resampler->reset();
    EXPECT_EQ(resampler->heldFrames(), 0);
    EXPECT_THAT(converted(*resampler, std::vector<float>(960, 0.0F), mono), ::testing::Each(0.0F));
}

TEST(FFmpegAudioConverterTest, RefusesFormatsAndSaysWhatWasAsked) {
    const AVAudioFormat good{float32, 48000, 2};
    const std::vector<AVAudioFormat> bad = {
        {float32, 48000, 0}, {float32, 48000, 9}, {int16, 0, 2}, {int16, 44100.5, 2}, {int16, std::nan(""), 2}};
    for (const AVAudioFormat& format : bad) {
        EXPECT_THROW(converter(format, good), NSError);
        EXPECT_THROW(converter(good, format), NSError);
    }
    try {
        converter({int16, 44100.5, 3}, good);
        FAIL() << "half a frame per second was accepted";
    } catch (const NSError& error) {
        EXPECT_EQ(
            error.localizedDescription(),
            "Unable to convert sound from 3 channels of int16 at 44100.5 Hz to 2 channels of float32 at 48000 Hz.");
    }
}

}  // namespace
}  // namespace zorvane::testing
