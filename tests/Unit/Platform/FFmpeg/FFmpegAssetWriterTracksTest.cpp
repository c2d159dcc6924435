#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

#include "WriterBench.hpp"

namespace zorvane::testing {
namespace {

using Status = AVAssetWriter::Status;

/// A movie of pictures and sound, of a session that starts at 0.
struct TracksBench : WriterBench {
    explicit TracksBench(double soundRate = 48000, FileRecord::Faults faults = {},
                         AVFileType fileType = AVFileType::quickTimeMovie)
        : WriterBench(smallVideo(), faults, fileType) {
        addSound(stereoSound(soundRate));
    }

    /// A picture each 50 ms, of which every second one is white.
    void show(double begin, double end) {
        for (auto index = std::lround(begin * 20); index < std::lround(end * 20); ++index) {
            append(sampleAt(CMTime::make(index, 20), index % 2 == 0 ? black : white));
        }
    }

    /// Sound in blocks of 50 ms, with a click at the begin of each full second.
    void play(double begin, double end) {
        for (auto index = std::lround(begin * 20); index < std::lround(end * 20); ++index) {
            appendSound(soundAt(CMTime::make(index, 20), stereo48, 2400, index % 20 == 0 ? clickAt(0) : steady(0)));
        }
    }

    /// What is in a process's file that is killed when the file has grown to `size`.
    std::vector<std::byte> cutOff(std::size_t size) const {
        std::vector<std::byte> bytes = file->bytes();
        const auto begin = bytes.begin() + std::to_integer<std::ptrdiff_t>(bytes[3]);
        const auto free = {0, 0, 0, 16, int{'f'}, int{'r'}, int{'e'}, int{'e'}, 0, 0, 0, 0, 0, 0, 0, 0};
        std::ranges::transform(free, begin, [](int byte) { return static_cast<std::byte>(byte); });
        bytes.resize(size);
        return bytes;
    }
};

TEST(FFmpegAssetWriterTracksTest, BothTracksLastAsLongAsTheSession) {
    for (const AVFileType fileType : {AVFileType::quickTimeMovie, AVFileType::mpeg4}) {
        TracksBench bench(44100, {}, fileType);
        ASSERT_TRUE(bench.start()) << textOf(bench.writer->error());
        for (int step = 0; step < 25; ++step) {
            bench.show(step * 0.1, step * 0.1 + 0.1);
            bench.play(step * 0.1, step * 0.1 + 0.1);
        }
        bench.writer->endSession(CMTime::make(220'513, 90'000));  // which is a whole number of neither's ticks
        ASSERT_EQ(bench.finish(), Status::completed) << textOf(bench.writer->error());

        const Movie movie = bench.movie(MovieDetail::pictures);
        EXPECT_EQ(movie.startTime, 0);
        EXPECT_EQ(movie.duration, 220'513);
        EXPECT_EQ(movie.pictures.size(), 50U);
        const MovieSound sound = bench.sound();
        EXPECT_EQ(sound.startTime, 0);
        EXPECT_EQ(sound.duration, 108'051);
        EXPECT_NEAR(static_cast<double>(sound.peak(22'050, 66'150)), 44'100, 1);
        EXPECT_NEAR(static_cast<double>(sound.peak(66'150, 108'051)), 88'200, 1);
        EXPECT_EQ(movieBoxes(bench.file->bytes()), "ftyp free mdat moov");
    }
}

TEST(FFmpegAssetWriterTracksTest, FileCutOffAtAnyMomentPlaysBothTracksToTheLastFragment) {
    TracksBench bench;
    ASSERT_TRUE(bench.start());
    std::vector<double> reached;  // by the session, when the file had grown
    for (int step = 0; step < 60; ++step) {
        bench.show(step * 0.05, step * 0.05 + 0.05);
        bench.play(step * 0.05, step * 0.05 + 0.05);
        reached.resize(bench.file->boundaries().size(), step * 0.05);
    }
    bench.writer->endSession(CMTime::make(3, 1));
    ASSERT_EQ(bench.finish(), Status::completed);

    const std::vector<std::size_t> boundaries = bench.file->boundaries();
    ASSERT_GT(boundaries.size(), 6U);
    for (std::size_t fragment = 0; fragment < reached.size(); ++fragment) {
        for (const std::size_t beyond : {0, 7, 300}) {
            const std::vector<std::byte> bytes = bench.cutOff(boundaries[fragment] + beyond);
            const Movie movie = readMovie(bytes, MovieDetail::pictures);
            const MovieSound sound = readSound(bytes);
            const double written = reached[fragment] - 0.1;
            ASSERT_GE(static_cast<double>(movie.packets.back().pts) / 90'000, written) << fragment;
            ASSERT_GE(static_cast<double>(sound.frameCount()) / 48'000, written) << fragment;
            EXPECT_EQ(movie.packets.front().pts, 0);
            EXPECT_EQ(sound.peak(0, std::min<std::int64_t>(sound.frameCount(), 24'000)), 0);
            if (sound.frameCount() > 60'000) {
                EXPECT_EQ(sound.peak(24'000, 60'000), 48'000);
            }
        }
    }
}

TEST(FFmpegAssetWriterTracksTest, PicturesDoNotWaitForSoundThatIsLateOrStalls) {
    TracksBench bench;
    ASSERT_TRUE(bench.start());
    bench.show(0, 2.5);
    const std::size_t withoutSound = bench.file->bytes().size();
    EXPECT_GE(readMovie(bench.file->bytes()).packets.back().pts, 2 * 90'000);
    bench.play(0, 1.5);
    const MovieSound late = readSound(bench.file->bytes());
    EXPECT_EQ(late.peak(24'000, 52'000), 48'000);  // in its place, though the file began without it
    bench.show(2.5, 4.5);
    EXPECT_GE(readMovie(bench.file->bytes()).packets.back().pts, 4 * 90'000);
    bench.play(4, 4.5);
    bench.writer->endSession(CMTime::make(9, 2));
    ASSERT_EQ(bench.finish(), Status::completed);

    EXPECT_EQ(readMovie(bench.cutOff(withoutSound), MovieDetail::pictures).packets.front().pts, 0);
    EXPECT_EQ(bench.movie().duration, 405'000);
    const MovieSound sound = bench.sound();
    EXPECT_EQ(sound.frameCount(), 216'000);
    EXPECT_EQ(sound.peak(24'000, 72'000), 48'000);
    EXPECT_LT(sound.loudest(74'000, 190'000), 0.001);
    EXPECT_EQ(sound.peak(170'000, 216'000), 192'000);
}

TEST(FFmpegAssetWriterTracksTest, StillPictureReachesTheFileWhileSoundGoesOn) {
    TracksBench bench;
    ASSERT_TRUE(bench.start());
    for (int second = 0; second < 4; ++second) {
        bench.append(second, second % 2 == 0 ? bench.black : bench.white);
        bench.play(second, second + 0.9);
        const Movie movie = bench.movie(MovieDetail::pictures);
        ASSERT_EQ(movie.packets.size(), static_cast<std::size_t>(second + 1));
        EXPECT_EQ(movie.packets.back().pts, second * 90'000);
        EXPECT_GE(bench.sound().frameCount(), second * 48'000 + 19'200);
        bench.play(second + 0.9, second + 1);
    }
    bench.writer->endSession(CMTime::make(4, 1));
    ASSERT_EQ(bench.finish(), Status::completed);
    EXPECT_EQ(bench.movie().durations(), std::vector<std::int64_t>(4, 90'000));
    EXPECT_EQ(bench.sound().duration, 192'000);
}

TEST(FFmpegAssetWriterTracksTest, TrackThatEndsEarlyLeavesTheOtherGoing) {
    TracksBench bench;
    ASSERT_TRUE(bench.start());
    bench.show(0, 0.5);
    bench.play(0, 0.5);
    bench.soundInput->markAsFinished();
    EXPECT_FALSE(bench.soundInput->isReadyForMoreMediaData());
    bench.show(0.5, 2);
    bench.writer->endSession(CMTime::make(2, 1));
    ASSERT_EQ(bench.finish(), Status::completed);
    EXPECT_EQ(bench.movie().packets.size(), 40U);
    EXPECT_EQ(bench.sound().frameCount(), 96'000);
}

TEST(FFmpegAssetWriterTracksTest, SoundWithoutPicturesIsAMovieOfSound) {
    TracksBench bench;
    ASSERT_TRUE(bench.start());
    bench.play(0, 1);
    bench.writer->endSession(CMTime::make(1, 1));
    ASSERT_EQ(bench.finish(), Status::completed) << textOf(bench.writer->error());
    EXPECT_EQ(bench.sound().frameCount(), 48'000);
    EXPECT_THROW(bench.movie(), std::runtime_error);
}

TEST(FFmpegAssetWriterTracksTest, DiskThatFillsUpLeavesWhatWasWritten) {
    const auto record = [](TracksBench& bench) {
        if (!bench.start()) {
            return;
        }
        for (int step = 0; step < 20; ++step) {
            bench.show(step * 0.1, step * 0.1 + 0.1);
            bench.play(step * 0.1, step * 0.1 + 0.1);
        }
        bench.writer->endSession(CMTime::make(2, 1));
        bench.finish();
    };
    TracksBench sound;
    record(sound);
    ASSERT_EQ(sound.writer->status(), Status::completed);
    const int operations = sound.file->operations();
    for (int failing = 1; failing <= operations; ++failing) {
        TracksBench bench(48000, {failing, std::numeric_limits<int>::max()});
        record(bench);
        ASSERT_EQ(bench.writer->status(), Status::failed) << "operation " << failing;
        EXPECT_FALSE(bench.soundInput->isReadyForMoreMediaData());
        if (const std::size_t fragments = bench.file->boundaries().size(); fragments > 1) {
            EXPECT_GE(bench.movie(MovieDetail::pictures).pictures.size(), fragments);
            EXPECT_GE(bench.sound().frameCount(), std::min<std::int64_t>((fragments - 1) * 19'200, 96'000));
        }
    }
}

}  // namespace
}  // namespace zorvane::testing
