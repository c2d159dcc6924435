#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include "WriterBench.hpp"

namespace zorvane::testing {
namespace {

using Bytes = std::vector<std::byte>;
using Status = AVAssetWriter::Status;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;

/// Keeps what a writer hands out.
struct SegmentCollector final : AVAssetWriterDelegate {
    void didOutputSegmentData(AVAssetWriter&, std::span<const std::byte> data, AVAssetSegmentType type,
                              const std::optional<AVAssetSegmentReport>& report) override {
        ASSERT_EQ(type == AVAssetSegmentType::initialization, pieces.empty());
        ASSERT_EQ(report.has_value(), !pieces.empty());
        pieces.emplace_back(data.begin(), data.end());
        if (report) {
            reports.push_back(*report);
        }
    }

    /// A segment as a movie of its own.
    Bytes segment(std::size_t number) const { return joined({pieces.at(0), pieces.at(number + 1)}); }
    Bytes whole() const { return joined(pieces); }

    static Bytes joined(const std::vector<Bytes>& parts) {
        Bytes all;
        for (const Bytes& part : parts) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }

    std::vector<Bytes> pieces;  // the first one is the initialization
    std::vector<AVAssetSegmentReport> reports;
};

/// A writer of segments of six seconds, of which the session starts at 0.
struct SegmentBench {
    template <class Settings>
    explicit SegmentBench(const Settings& settings) : input(std::make_shared<AVAssetWriterInput>(settings)) {
        FFmpegWriterParts parts;
        parts.clock = std::make_shared<ManualClock>();
        writer = FFmpegMediaWriting(parts).makeSegmentWriter({.preferredOutputSegmentInterval = CMTime::make(6, 1),
                                                              .initialSegmentStartTime = kCMTimeZero,
                                                              .delegate = collector});
        writer->add(input);
        EXPECT_TRUE(writer->startWriting()) << textOf(writer->error());
        writer->startSession(kCMTimeZero);
    }
    ~SegmentBench() {
        writer.reset();
        Activity::waitUntilIdle();
    }

    void show(std::initializer_list<double> times) {
        for (const double time : times) {
            append(sampleAt(time, picture));
        }
    }
    void append(const CMSampleBuffer& sample) {
        EXPECT_TRUE(input->append(sample));
        Activity::waitUntilIdle();
    }
    void endAt(CMTime time) {
        writer->endSession(time);
        writer->finishWriting([] {});
        Activity::waitUntilIdle();
        EXPECT_EQ(writer->status(), Status::completed) << textOf(writer->error());
    }

    /// In seconds.
    std::vector<double> durations() const {
        std::vector<double> seconds;
        for (const AVAssetSegmentReport& report : collector->reports) {
            seconds.push_back(report.duration.seconds());
        }
        return seconds;
    }
    std::string codecName() const { return collector->reports.at(0).codecName.value_or("none"); }

    const std::shared_ptr<SegmentCollector> collector = std::make_shared<SegmentCollector>();
    const std::shared_ptr<AVAssetWriterInput> input;
    const CVPixelBufferRef picture = makeGreyPicture(64, 48, 128);
    std::shared_ptr<AVAssetWriter> writer;
};

TEST(SegmentWriterTest, SegmentsOfVideoJoinToAWholeTrack) {
    SegmentBench bench(smallVideo());
    for (int frame = 0; frame < 137; ++frame) {
        bench.show({frame / 10.0});
    }
    ASSERT_EQ(bench.collector->reports.size(), 2U) << "handed out while the recording goes on";
    bench.endAt(CMTime::make(1375, 100));

    EXPECT_THAT(bench.durations(), ElementsAre(6.0, 6.0, 1.75));
    EXPECT_EQ(bench.collector->reports[2].earliestPresentationTimeStamp, CMTime::make(12, 1));
    const Movie movie = readMovie(bench.collector->whole());
    EXPECT_EQ(movie.startTime, 0);
    EXPECT_EQ(movie.packets.size(), 137U) << "where a picture begins at a cut, none is repeated";
    for (std::size_t number = 0; number < 3; ++number) {
        const Movie segment = readMovie(bench.collector->segment(number), MovieDetail::pictures);
        EXPECT_EQ(segment.packets.front().pts, static_cast<std::int64_t>(number) * 6 * 90'000);
        EXPECT_TRUE(segment.packets.front().isKey);
        EXPECT_EQ(std::ranges::count(segment.packets, true, &MoviePacket::isKey), 1);
        EXPECT_EQ(segment.pictures.size(), segment.packets.size()) << "it can be decoded alone";
    }
    EXPECT_EQ(movieBoxes(bench.collector->pieces[0]), "ftyp moov");
    EXPECT_EQ(movieBoxes(bench.collector->pieces[1]), "moof mdat");
}

TEST(SegmentWriterTest, SegmentsOfACameraSayItsColours) {
    for (const CMVideoCodecType codec : {CMVideoCodecType::h264, CMVideoCodecType::hevc}) {
        AVVideoSettings settings = smallVideo();
        settings.codec = codec;
        settings.colorProperties.reset();
        SegmentBench bench(settings);
        bench.append(sampleAt(0.0, makeVideoPicture(videoLayout(64, 48), [](int, int) {
                                  return std::array<std::uint8_t, 3>{60, 100, 220};
                              })));
        bench.endAt(CMTime::make(7, 1));

        ASSERT_EQ(bench.collector->reports.size(), 2U);
        for (const std::size_t number : {0U, 1U}) {
            const Movie segment = readMovie(bench.collector->segment(number), MovieDetail::pictures);
            EXPECT_EQ(segment.range + " " + segment.primaries + " " + segment.transfer + " " + segment.matrix,
                      "tv bt709 bt709 smpte170m");
            EXPECT_NEAR(segment.pictures.at(0).crAt(32, 24), 220, 2);
        }
    }
}

TEST(SegmentWriterTest, APictureOnShowAcrossACutIsRepeatedThere) {
    SegmentBench bench(smallVideo());
    bench.show({0, 5.9, 6.9, 25});
    bench.endAt(CMTime::make(31, 1));
    EXPECT_THAT(bench.durations(), ElementsAre(6.0, 6.0, 6.0, 6.0, 6.0, 1.0));
    EXPECT_EQ(readMovie(bench.collector->segment(4)).times(), (std::vector<std::int64_t>{24 * 90'000, 25 * 90'000}));
}

TEST(SegmentWriterTest, TheLastSegmentEndsWithTheSession) {
    struct Case {
        std::vector<double> pictures;
        CMTime end;
        std::vector<double> durations;
    };
    const Case cases[] = {
        {{0, 6, 12}, CMTime::make(12, 1), {6, 6}},                  // the picture at the end only closes the one before
        {{0, 6, 12, 12.1, 12.3}, CMTime::make(119, 10), {6, 5.9}},  // after a cut, the end turns out to lie before it
        {{0, 6, 12}, CMTime::make(12'001, 1000), {6, 6, 0.001}},
        {{0}, CMTime::make(1, 10), {0.1}},
        {{0}, CMTime::make(6, 1), {6}},
    };
    for (const Case& expected : cases) {
        SegmentBench bench(smallVideo());
        for (const double time : expected.pictures) {
            bench.show({time});
        }
        bench.endAt(expected.end);
        EXPECT_THAT(bench.durations(), ::testing::Pointwise(::testing::DoubleNear(1e-9), expected.durations));
    }
}

TEST(SegmentWriterTest, SoundIsCutBetweenPacketsAndNothingIsLost) {
    constexpr std::uint32_t click = 7 * 48'000 + 11;
    SegmentBench bench(stereoSound());
    for (std::uint32_t first = 0; first < 13 * 48'000; first += 4800) {
        const SoundLevel level = clickAt(click);
        bench.append(
            soundAt(CMTime::make(first, 48'000), stereo48, 4800,
                    [&](std::uint32_t frame, std::uint32_t channel) { return level(first + frame, channel); }));
    }
    bench.endAt(CMTime::make(601'234, 48'000));

    ASSERT_EQ(bench.collector->reports.size(), 3U);
    CMTime end = kCMTimeZero;
    for (const AVAssetSegmentReport& report : bench.collector->reports) {
        EXPECT_EQ(report.earliestPresentationTimeStamp, end) << "a segment begins where the one before it ends";
        end = report.earliestPresentationTimeStamp + report.duration;
    }
    EXPECT_NEAR(bench.collector->reports[1].earliestPresentationTimeStamp.seconds(), 6, 512 / 48'000.0);
    EXPECT_EQ(end, CMTime::make(601'234, 48'000));
    const MovieSound sound = readSound(bench.collector->whole());
    EXPECT_GE(sound.frameCount(), 601'234) << "whole packets, since this reader looks at no duration in a fragment";
    EXPECT_EQ(sound.peak(0, 601'234), click) << "time 0 is the session's start, behind the encoder's padding";
    EXPECT_EQ(bench.codecName(), "mp4a.40.2");
}

TEST(SegmentWriterTest, ReportsTheCodecThatTheEncoderMade) {
    AVVideoSettings settings = smallVideo();
    for (const auto& [codec, name] : {std::pair(CMVideoCodecType::h264, "avc1\\.6400[0-9a-f]+"),
                                      std::pair(CMVideoCodecType::hevc, "hvc1\\.2\\.4\\.L.*")}) {
        settings.codec = codec;
        SegmentBench bench(settings);
        bench.show({0});
        bench.endAt(CMTime::make(1, 1));
        EXPECT_THAT(bench.codecName(), MatchesRegex(name));
    }
}

TEST(SegmentWriterTest, TakesOneTrack) {
    const auto writer = FFmpegMediaWriting().makeSegmentWriter({.preferredOutputSegmentInterval = CMTime::make(6, 1)});
    writer->add(std::make_shared<AVAssetWriterInput>(smallVideo()));
    EXPECT_FALSE(writer->canAdd(AVAssetWriterInput(stereoSound())));
    EXPECT_TRUE(writer->outputURL().empty());
}

}  // namespace
}  // namespace zorvane::testing
