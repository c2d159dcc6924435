#include "Zorvane/Internal/AudioGapFiller.hpp"

#include <gtest/gtest.h>

#include <algorithm>

#include "Zorvane/Internal/AudioSamples.hpp"
#include "Zorvane/ZVError.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/Timeline.hpp"

namespace zorvane {
namespace {

using testing::audioDescription;
using testing::sound;

/// A time in frames of 48 kHz sound, as sources stamp it: only then do ends and beginnings meet exactly.
constexpr CMTime at(double seconds) {
    return testing::at(seconds, 48000);
}

constexpr std::string_view gapMessage = "Detected gap in audio.";

class AudioGapFillerTest : public ::testing::Test {
  protected:
    /// The times and lengths of what the filler makes of a sample, as "seconds+frames" in one line.
    std::string process(const CMSampleBuffer& sample) {
        std::string line;
        for (const CMSampleBuffer& out : filler.process(sample)) {
            line += fmt::format("{}{}+{}", line.empty() ? "" : " ", out.presentationTimeStamp().seconds(),
                                out.numSamples());
        }
        return line;
    }

    LogCapture log;
    AudioGapFiller filler{log.logger<AudioGapFiller>()};
};

TEST_F(AudioGapFillerTest, TheFirstSampleYieldsNoSilenceHoweverLate) {
    EXPECT_EQ(process(sound(at(5000), 480)), "5000+480");
    EXPECT_TRUE(log.has(ZVLogLevel::debug, "Received first sample buffer, gap detection started.",
                        {{"samplePTS", at(5000).logDescription()}}));
}

TEST_F(AudioGapFillerTest, SamplesThatJoinPassWithoutAWord) {
    process(sound(at(1), 4800));
    const std::size_t messages = log.messages().size();
    EXPECT_EQ(process(sound(at(1.1), 4800)), "1.1+4800");
    EXPECT_EQ(process(sound(testing::at(1.2, 1000), 4800)), "1.2+4800") << "in another timescale";
    EXPECT_EQ(log.messages().size(), messages);
}

TEST_F(AudioGapFillerTest, AGapIsFilledWithSilenceFromTheExpectedTime) {
    process(sound(at(1), 4800));
    const auto samples = filler.process(sound(at(1.6), 4800));
    ASSERT_EQ(samples.size(), 2u);
    EXPECT_EQ(samples[0].presentationTimeStamp(), at(1.1));
    EXPECT_EQ(samples[0].duration(), at(0.5));
    EXPECT_EQ(samples[0].numSamples(), 24000);
    ASSERT_TRUE(samples[0].formatDescription());
    EXPECT_EQ(samples[0].formatDescription()->audioFormat, AVAudioFormat());
    const auto bytes = samples[0].audioBuffer()->bytes();
    EXPECT_TRUE(std::all_of(bytes.begin(), bytes.end(), [](std::byte byte) { return byte == std::byte(); }));
    EXPECT_EQ(samples[1].presentationTimeStamp(), at(1.6));

    EXPECT_EQ(process(sound(at(1.7), 4800)), "1.7+4800") << "the stream is continuous again";
    const LogMetadata gap{{"start", at(1.1).logDescription()}, {"duration", at(0.5).logDescription()}};
    EXPECT_EQ(log.count(ZVLogLevel::debug, gapMessage), 1u);
    EXPECT_EQ(log.count(ZVLogLevel::info, gapMessage), 1u);
}

TEST_F(AudioGapFillerTest, AGapOfAnyNumberOfFramesIsFilledToTheLastOne) {
    for (const int rate : {44100, 48000, 96000}) {
        const auto description = audioDescription({AVAudioCommonFormat::int16, static_cast<double>(rate), 1});
        for (int frames = 1; frames < 1000; ++frames) {
            const auto silence = audio_samples::silentAudio(description, CMTime::make(frames, rate), at(1));
            EXPECT_EQ(silence.numSamples(), frames) << "at " << rate << " Hz";
        }
    }
}

TEST_F(AudioGapFillerTest, AGapOfLessThanAFrameYieldsASampleWithoutFrames) {
    process(sound(at(1), 48000));
    const CMTime oneTickLate = CMTime::make(2'000'000'001, testing::nanosecondTimescale);
    EXPECT_EQ(process(sound(oneTickLate, 480)), "2+0 2.000000001+480");
}

TEST_F(AudioGapFillerTest, AnOverlapPassesAndMovesTheExpectedTimeBack) {
    process(sound(at(1), 48000));
    EXPECT_EQ(process(sound(at(1.5), 4800)), "1.5+4800");
    EXPECT_EQ(log.count(ZVLogLevel::warning, "Negative gap detected, got overlapping audio, this should never happen."),
              1u);
    EXPECT_EQ(process(sound(at(1.7), 480)), "1.6+4800 1.7+480");
}

TEST_F(AudioGapFillerTest, ATimeThatIsNoNumberPassesAndLeavesTheExpectedTimeAlone) {
    process(sound(at(1), 48000));
    for (const CMTime noNumber : {kCMTimeInvalid, kCMTimePositiveInfinity, kCMTimeIndefinite}) {
        EXPECT_EQ(filler.process(sound(noNumber, 480)).size(), 1u);
    }
    EXPECT_EQ(log.count(ZVLogLevel::warning, "Invalid presentation time in sample buffer, unable to detect gaps."), 3u);
    EXPECT_EQ(process(sound(at(2), 480)), "2+480");
}

TEST_F(AudioGapFillerTest, ASampleThatDoesNotSayHowLongItIsStartsTheDetectionAnew) {
    process(sound(at(1), 48000));
    const CMSampleBuffer endless = CMSampleBuffer::audio(sound(at(2), 480).audioBuffer(),
                                                         {kCMTimeInvalid, at(2), kCMTimeInvalid}, audioDescription());
    EXPECT_EQ(process(endless), "2+480");
    EXPECT_EQ(process(sound(at(9), 480)), "9+480");
}

TEST_F(AudioGapFillerTest, WithoutAFormatTheGapStaysAndTheExpectedTimeMovesOn) {
    process(sound(at(1), 48000));
    EXPECT_EQ(process(sound(at(3), 4800, nullptr)), "3+4800");
    EXPECT_TRUE(log.has(ZVLogLevel::warning,
                        "Sample buffer is missing format description, unable to fill detected audio gap."));
    EXPECT_EQ(process(sound(at(3.1), 4800)), "3.1+4800");
}

TEST_F(AudioGapFillerTest, AGapThatCannotBeFilledIsAnErrorOfThatCallOnly) {
    process(sound(at(1), 48000));
    EXPECT_THROW(process(sound(at(1e9), 4800)), ZVError);
    EXPECT_EQ(process(sound(at(1e9 + 0.1), 4800)), "1000000000.1+4800");
}

TEST(AudioSamplesTest, SilenceSaysWhyItCannotBeMade) {
    struct Case {
        std::shared_ptr<const CMFormatDescription> description;
        CMTime duration;
        std::string_view text;
    };
    constexpr std::string_view tooShort = "Silent audio duration must be greater than zero.";
    constexpr std::string_view tooLong = "Silent audio duration exceeds UInt32 size at format description sample rate.";
    constexpr std::string_view noBuffer =
        "AVAudioPCMBuffer for silent audio returned nil, check duration and format description.";
    const auto picture = std::make_shared<const CMFormatDescription>();
    const std::vector<Case> cases{{audioDescription(), kCMTimeZero, tooShort},
                                  {audioDescription(), at(-1), tooShort},
                                  {audioDescription(), at(89479), tooLong},
                                  {audioDescription(), kCMTimePositiveInfinity, tooLong},
                                  {audioDescription(), kCMTimeInvalid, tooLong},
                                  {picture, at(1), noBuffer},
                                  {audioDescription({AVAudioCommonFormat::int16, 48000, 0}), at(1), noBuffer}};
    for (const Case& row : cases) {
        try {
            audio_samples::silentAudio(row.description, row.duration, at(1));
            ADD_FAILURE() << "made " << row.duration.logDescription();
        } catch (const ZVError& error) {
            EXPECT_EQ(error.errorGroup(), fmt::format("internalError: {}", row.text));
        }
    }
}

TEST(AudioSamplesTest, ASampleOfABufferLastsAsLongAsItsFrames) {
    auto buffer = AVAudioPCMBuffer::make({AVAudioCommonFormat::int16, 44100.9, 1}, 441);
    buffer->setFrameLength(440);
    const CMSampleBuffer sample = audio_samples::from(buffer, at(2));
    EXPECT_EQ(sample.numSamples(), 440);
    EXPECT_EQ(sample.duration(), CMTime::make(440, 44100));
    EXPECT_EQ(sample.presentationTimeStamp(), at(2));
    EXPECT_FALSE(sample.timing().decodeTimeStamp.isValid());
    EXPECT_EQ(sample.audioBuffer(), buffer);
    EXPECT_EQ(sample.formatDescription()->audioFormat, buffer->format());
}

}  // namespace
}  // namespace zorvane
