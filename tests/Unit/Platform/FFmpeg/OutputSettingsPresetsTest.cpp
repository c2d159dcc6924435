#include "Zorvane/Platform/FFmpeg/OutputSettingsPresets.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace zorvane::testing {
namespace {

using Preset = AVOutputSettingsPreset;

TEST(OutputSettingsPresetsTest, SoundKeepsTheSourcesRateAndChannelsWhereItCan) {
    struct Case {
        double sourceRate;
        std::uint32_t sourceChannels;
        double rate;
        std::int32_t channels;
        std::int32_t bitRate;
    };
    for (const Case& test :
         {Case{48000, 2, 48000, 2, 160'000}, Case{44100, 1, 44100, 1, 80'000}, Case{96000, 6, 96000, 6, 480'000},
          Case{192000, 2, 48000, 2, 160'000}, Case{16000, 1, 16000, 1, 29'025}, Case{47500, 12, 48000, 8, 640'000}}) {
        PresetSettingsAssistant assistant(Preset::h264_1920x1080);
        CMFormatDescription source{.mediaType = CMMediaType::audio};
        source.audioFormat = AVAudioFormat{AVAudioCommonFormat::int16, test.sourceRate, test.sourceChannels};
        assistant.setSourceAudioFormat(source);
        const AVAudioSettings settings = *assistant.audioSettings();
        EXPECT_EQ(settings.sampleRate, test.rate) << test.sourceRate;
        EXPECT_EQ(settings.numberOfChannels, test.channels) << test.sourceRate;
        EXPECT_EQ(settings.bitRate, test.bitRate) << test.sourceRate;
    }
}

TEST(OutputSettingsPresetsTest, PicturesKeepTheSourcesSizeWithinThePresetsAndTheirShapeBeyond) {
    struct Case {
        Preset preset;
        CMVideoDimensions source;
        CMVideoDimensions size;
    };
    for (const Case& test :
         {Case{Preset::h264_1920x1080, {1280, 720}, {1280, 720}}, Case{Preset::h264_1920x1080, {97, 65}, {97, 65}},
          Case{Preset::h264_1920x1080, {3840, 2160}, {1920, 1080}},
          Case{Preset::h264_1920x1080, {2560, 1440}, {1920, 1080}},
          Case{Preset::h264_1920x1080, {2592, 1944}, {1440, 1080}},
          Case{Preset::h264_1920x1080, {2560, 1080}, {1920, 810}},
          Case{Preset::h264_3840x2160, {2560, 1440}, {2560, 1440}},
          Case{Preset::hevc_7680x4320, {9000, 4000}, {7680, 3414}}}) {
        PresetSettingsAssistant assistant(test.preset);
        assistant.setSourceVideoFormat({.dimensions = test.source});
        const CMVideoDimensions size{assistant.videoSettings()->width, assistant.videoSettings()->height};
        EXPECT_EQ(size, test.size) << test.source.width << ": " << size.width << " x " << size.height;
    }
}

TEST(OutputSettingsPresetsTest, CamerasHaveABoundByTheirRateAndScreensHaveNone) {
    PresetSettingsAssistant assistant(Preset::h264_1920x1080);
    const auto compression = [&] { return assistant.videoSettings()->compressionProperties; };
    assistant.setSourceVideoFormat({.codec = CMVideoCodecType::h264, .dimensions = {1920, 1080}});
    EXPECT_EQ(compression().maxBitRate, std::nullopt);
    EXPECT_EQ(compression().expectedSourceFrameRate, std::nullopt);
    assistant.setSourceVideoFormat({.dimensions = {1920, 1080}});
    EXPECT_EQ(compression().maxBitRate, 12'441'600);
    assistant.setSourceVideoMinFrameDuration(CMTime::make(1, 15));
    EXPECT_EQ(compression().maxBitRate, 6'220'800);
    EXPECT_EQ(compression().expectedSourceFrameRate, 15);
    assistant.setSourceVideoMinFrameDuration(CMTime::make(1, 1'000'000));
    EXPECT_EQ(compression().expectedSourceFrameRate, 120);
}

}  // namespace
}  // namespace zorvane::testing
