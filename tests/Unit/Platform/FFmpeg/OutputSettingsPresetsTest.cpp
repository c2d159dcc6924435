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

TEST(OutputSettingsPresetsTest, PicturesKeepTheSourcesSizeWithinThePresets) {
    const auto sizeOf = [](Preset preset, CMVideoDimensions source) {
        PresetSettingsAssistant assistant(preset);
        assistant.setSourceVideoFormat({.dimensions = source});
        return CMVideoDimensions{assistant.videoSettings()->width, assistant.videoSettings()->height};
    };
    EXPECT_EQ(sizeOf(Preset::h264_1920x1080, {1280, 720}), (CMVideoDimensions{1280, 720}));
    EXPECT_EQ(sizeOf(Preset::h264_1920x1080, {2560, 1440}), (CMVideoDimensions{1920, 1080}));
    EXPECT_EQ(sizeOf(Preset::h264_3840x2160, {2560, 1440}), (CMVideoDimensions{2560, 1440}));
    EXPECT_EQ(sizeOf(Preset::hevc_7680x4320, {9000, 4000}), (CMVideoDimensions{7680, 4000}));
}

}  // namespace
}  // namespace zorvane::testing
