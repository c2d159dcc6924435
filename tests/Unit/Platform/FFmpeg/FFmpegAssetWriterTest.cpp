#include "Zorvane/Platform/FFmpeg/FFmpegAssetWriter.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "WriterBench.hpp"
#include "Zorvane/Platform/Foundation/NSException.hpp"

namespace zorvane::testing {
namespace {

using std::chrono::milliseconds;

using Status = AVAssetWriter::Status;
using Ticks = std::vector<std::int64_t>;

constexpr std::string_view finishedBoxes = "ftyp free mdat moov";

TEST(FFmpegAssetWriterTest, MovieLastsFromTheSessionsStartToItsEnd) {
    WriterBench bench;
    ASSERT_TRUE(bench.start(CMTime::make(100, 1)));
    bench.append(100.0, bench.black);
    bench.append(100.25, bench.white);
    bench.append(100.5, bench.black);
    bench.writer->endSession(CMTime::make(102, 1));
    ASSERT_EQ(bench.finish(), Status::completed) << textOf(bench.writer->error());

    const Movie movie = bench.movie(MovieDetail::pictures);
    EXPECT_EQ(movie.timescale, 90'000);
    EXPECT_EQ(movie.startTime, 0);
    EXPECT_EQ(movie.duration, 180'000);
    EXPECT_EQ(movie.times(), (Ticks{0, 22'500, 45'000}));
    EXPECT_EQ(movie.durations(), (Ticks{22'500, 22'500, 135'000}));
    ASSERT_EQ(movie.pictures.size(), 3U);
    EXPECT_NEAR(movie.pictures[0].lumaAt(30, 20), 16, 1);
    EXPECT_NEAR(movie.pictures[1].lumaAt(30, 20), 235, 1);
    EXPECT_EQ(movieBoxes(bench.file->bytes()), finishedBoxes);
    EXPECT_TRUE(bench.file->isClosed());
}

// The muxer of the index then goes back to boxes that have left its buffer, to write their sizes.
TEST(FFmpegAssetWriterTest, LongMovieHasAWholeIndex) {
    WriterBench bench;
    ASSERT_TRUE(bench.start());
    Ticks times;
    for (int index = 0; index < 6'000; ++index) {
        times.push_back(index * 3'000 + index % 2);  // so that each picture's duration stands in the index by itself
        bench.append(sampleAt(CMTime::make(times.back(), 90'000), index % 3 == 0 ? bench.black : bench.white));
    }
    bench.writer->endSession(CMTime::make(200, 1));
    ASSERT_EQ(bench.finish(), Status::completed);

    const std::vector<std::size_t> boundaries = bench.file->boundaries();
    EXPECT_GT(boundaries.back() - boundaries[boundaries.size() - 2], 64U * 1024);
    EXPECT_EQ(movieBoxes(bench.file->bytes()), finishedBoxes);
    EXPECT_EQ(bench.movie().times(), times);
    EXPECT_EQ(bench.movie().duration, 200 * 90'000);
}

TEST(FFmpegAssetWriterTest, PictureAtTheEndIsNotInTheMovie) {
    WriterBench bench;
    ASSERT_TRUE(bench.start(CMTime::make(10, 1)));
    bench.append(10.0, bench.black);
    bench.append(10.5, bench.white);
    bench.append(11.0, bench.white);  // closes the recording before the writer knows of the end
    bench.writer->endSession(CMTime::make(11, 1));
    ASSERT_EQ(bench.finish(), Status::completed);

    EXPECT_EQ(bench.movie().times(), (Ticks{0, 45'000}));
    EXPECT_EQ(bench.movie().durations(), (Ticks{45'000, 45'000}));
    EXPECT_EQ(bench.movie().duration, 90'000);
}

TEST(FFmpegAssetWriterTest, PicturesBehindTheEndDoNotLengthenTheMovie) {
    WriterBench bench;
    ASSERT_TRUE(bench.start(CMTime::make(10, 1)));
    for (const double time : {10.0, 10.5, 11.25, 11.3, 11.5}) {
        bench.append(time, bench.white);
    }
    bench.writer->endSession(CMTime::make(11, 1));
    bench.append(11.6, bench.black);
    ASSERT_EQ(bench.finish(), Status::completed);

    EXPECT_EQ(bench.movie().times(), (Ticks{0, 45'000}));
    EXPECT_EQ(bench.movie().duration, 90'000);
}

TEST(FFmpegAssetWriterTest, EndIsExactThoughAnEarlyFlushAssumedAnotherDuration) {
    WriterBench bench;
    ASSERT_TRUE(bench.start());
    bench.append(0.0, bench.black);
    bench.clock->advance(milliseconds(600));
    bench.append(3.0, bench.white);
    bench.clock->advance(milliseconds(600));
    bench.append(3.1, bench.white);
    bench.clock->advance(milliseconds(600));  // so that the closing picture is in the file before the end is known
    bench.writer->endSession(CMTime::make(31, 10));
    ASSERT_EQ(bench.finish(), Status::completed);

    EXPECT_EQ(bench.movie().times(), (Ticks{0, 270'000}));
    EXPECT_EQ(bench.movie().durations(), (Ticks{270'000, 9'000}));
    EXPECT_EQ(bench.movie(MovieDetail::pictures).pictures.size(), 2U);
}

TEST(FFmpegAssetWriterTest, NewestPictureBeforeTheStartIsTheFirst) {
    WriterBench bench;
    ASSERT_TRUE(bench.start(CMTime::make(10, 1)));
    bench.append(8.0, bench.white);
    bench.append(9.0, bench.black);
    bench.append(10.5, bench.white);
    bench.writer->endSession(CMTime::make(11, 1));
    ASSERT_EQ(bench.finish(), Status::completed);

    const Movie movie = bench.movie(MovieDetail::pictures);
    EXPECT_EQ(movie.times(), (Ticks{0, 45'000}));
    EXPECT_NEAR(movie.pictures.at(0).lumaAt(30, 20), 16, 1);
    EXPECT_NEAR(movie.pictures.at(1).lumaAt(30, 20), 235, 1);
}

TEST(FFmpegAssetWriterTest, WithoutAnEndTheLastPictureLastsAsLongAsTheOneBefore) {
    WriterBench bench;
    ASSERT_TRUE(bench.start());
    bench.append(0.0, bench.black);
    bench.append(0.1, bench.white);
    ASSERT_EQ(bench.finish(), Status::completed);
    EXPECT_EQ(bench.movie().duration, 18'000);
}

TEST(FFmpegAssetWriterTest, TimesRiseStrictlyWhenPicturesComeFasterThanTheTicks) {
    WriterBench bench;
    ASSERT_TRUE(bench.start());
    for (int index = 0; index < 10; ++index) {
        bench.append(sampleAt(CMTime::make(index, 1'000'000), index % 2 == 0 ? bench.black : bench.white));
    }
    bench.writer->endSession(CMTime::make(1, 1));
    ASSERT_EQ(bench.finish(), Status::completed);
    EXPECT_EQ(bench.movie().times(), (Ticks{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(bench.movie().duration, 90'000);
}

TEST(FFmpegAssetWriterTest, PlacesKeyFramesByTime) {
    AVVideoSettings settings = smallVideo();
    settings.compressionProperties.maxKeyFrameIntervalDuration = 2;
    WriterBench bench(settings);
    ASSERT_TRUE(bench.start());
    for (int index = 0; index < 10; ++index) {
        bench.append(index * 0.5, bench.black);
    }
    ASSERT_EQ(bench.finish(), Status::completed);
    Ticks keys;
    for (const MoviePacket& packet : bench.movie().packets) {
        if (packet.isKey) {
            keys.push_back(packet.pts);
        }
    }
    EXPECT_EQ(keys, (Ticks{0, 180'000, 360'000}));
}

TEST(FFmpegAssetWriterTest, FullQueueIsNotReadyAndRefusesWithoutAnError) {
    WriterBench bench;
    EXPECT_FALSE(bench.input->isReadyForMoreMediaData());
    ASSERT_TRUE(bench.writer->startWriting());
    // Samples wait for the session, so the queue fills up.
    std::size_t taken = 0;
    while (bench.input->isReadyForMoreMediaData()) {
        ASSERT_TRUE(bench.append(static_cast<double>(taken), bench.white));
        ++taken;
    }
    EXPECT_EQ(taken, WriterQueue::videoCapacity);
    EXPECT_FALSE(bench.append(9.0, bench.black));
    EXPECT_EQ(bench.writer->status(), Status::writing);

    bench.writer->startSession(kCMTimeZero);
    Activity::waitUntilIdle();
    EXPECT_TRUE(bench.input->isReadyForMoreMediaData());
    bench.writer->endSession(CMTime::make(10, 1));
    ASSERT_EQ(bench.finish(), Status::completed);
    EXPECT_EQ(bench.movie().times(), (Ticks{0, 90'000, 180'000}));
    EXPECT_EQ(bench.movie().duration, 900'000);  // the end holds, though its picture was refused
}

TEST(FFmpegAssetWriterTest, GivesPicturesBackToASmallPool) {
    WriterBench bench;
    ASSERT_TRUE(bench.start());
    const auto pool = CVPixelBufferPool::make(bgraLayout(64, 48), 2);
    for (int index = 0; index < 20; ++index) {
        const CVPixelBufferRef picture = pool->take();
        ASSERT_TRUE(picture) << "none was left at picture " << index;
        std::fill_n(picture->mutableBytes(), picture->layout().byteSize(), static_cast<std::byte>(index * 10));
        bench.append(index * 0.1, picture);
    }
    ASSERT_EQ(bench.finish(), Status::completed);
    EXPECT_EQ(pool->outstanding(), 0U);
    const Movie movie = bench.movie(MovieDetail::pictures);
    for (int index = 0; index < 20; ++index) {
        EXPECT_NEAR(movie.pictures.at(static_cast<std::size_t>(index)).lumaAt(5, 5), 16 + index * 10 * 219 / 255.0, 2);
    }
}

struct FormatCase {
    std::string name;
    AVFileType fileType;
    CMVideoCodecType codec;
    AVVideoColorPrimaries primaries;
    std::int32_t width;
    std::int32_t height;
};

class MovieFormatTest : public ::testing::TestWithParam<FormatCase> {};

TEST_P(MovieFormatTest, SaysItsSizeCodecAndColoursAndShowsThem) {
    const FormatCase& format = GetParam();
    const bool isWide = format.codec == CMVideoCodecType::hevc;
    AVVideoSettings settings = smallVideo(format.width, format.height);
    settings.codec = format.codec;
    settings.colorProperties->primaries = format.primaries;
    WriterBench bench(settings, {}, format.fileType);
    ASSERT_TRUE(bench.start()) << textOf(bench.writer->error());
    // Quarters: red, green, blue, white.
    const std::uint32_t top = isWide ? 1023 : 255;
    const auto layout = isWide ? l10rLayout(format.width, format.height, CGColorSpaceName::displayP3)
                               : bgraLayout(format.width, format.height);
    bench.append(0.0, makePicture(layout, [&](int x, int y) {
                     const bool isRight = x >= format.width / 2;
                     const bool isBelow = y >= format.height / 2;
                     return PixelColor{isRight == isBelow ? top : 0, isRight ? top : 0, isBelow ? top : 0};
                 }));
    bench.writer->endSession(CMTime::make(1, 1));
    ASSERT_EQ(bench.finish(), Status::completed) << textOf(bench.writer->error());

    const Movie movie = bench.movie(MovieDetail::pictures);
    EXPECT_EQ(movie.brand, format.fileType == AVFileType::mpeg4 ? "iso5" : "qt  ");
    EXPECT_EQ(movie.codec, isWide ? "hevc" : "h264");
    EXPECT_EQ(movie.profile, isWide ? "Main 10" : "High");
    EXPECT_EQ(movie.tag, isWide ? "hvc1" : "avc1");
    EXPECT_EQ(movie.pixelFormat, isWide ? "yuv420p10le" : "yuv420p");
    EXPECT_EQ(movie.range, "tv");
    EXPECT_EQ(movie.primaries, isWide ? "smpte432" : "bt709");
    EXPECT_EQ(movie.transfer, "bt709");
    EXPECT_EQ(movie.matrix, "bt709");
    const MoviePicture& picture = movie.pictures.at(0);
    if (!isWide) {
        EXPECT_EQ(picture.width, format.width);
        EXPECT_EQ(picture.height, format.height);
    }
    struct Patch {
        int x, y, luma, cb, cr;
    };
    const int right = format.width * 3 / 4;
    const int below = format.height * 3 / 4;
    for (const Patch& patch : {Patch{8, 8, 63, 102, 240}, Patch{right, 8, 173, 42, 26}, Patch{8, below, 32, 240, 118},
                               Patch{right, below, 235, 128, 128}}) {
        EXPECT_NEAR(picture.lumaAt(patch.x, patch.y), patch.luma, 2) << patch.x << ", " << patch.y;
        EXPECT_NEAR(picture.cbAt(patch.x, patch.y), patch.cb, 2) << patch.x << ", " << patch.y;
        EXPECT_NEAR(picture.crAt(patch.x, patch.y), patch.cr, 2) << patch.x << ", " << patch.y;
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, MovieFormatTest,
                         ::testing::Values(FormatCase{"H264Movie", AVFileType::quickTimeMovie, CMVideoCodecType::h264,
                                                      AVVideoColorPrimaries::ituR709_2, 96, 64},
                                           FormatCase{"H264MPEG4", AVFileType::mpeg4, CMVideoCodecType::h264,
                                                      AVVideoColorPrimaries::ituR709_2, 96, 64},
                                           FormatCase{"H264OddSize", AVFileType::mpeg4, CMVideoCodecType::h264,
                                                      AVVideoColorPrimaries::ituR709_2, 97, 65},
                                           FormatCase{"WideHEVCMovie", AVFileType::quickTimeMovie,
                                                      CMVideoCodecType::hevc, AVVideoColorPrimaries::p3D65, 96, 64},
                                           FormatCase{"WideHEVCOddSize", AVFileType::mpeg4, CMVideoCodecType::hevc,
                                                      AVVideoColorPrimaries::p3D65, 97, 65}),
                         [](const auto& testCase) { return testCase.param.name; });

TEST(FFmpegAssetWriterTest, ScalesPicturesToTheSizeOfTheVideo) {
    WriterBench bench(smallVideo(80, 60));
    ASSERT_TRUE(bench.start());
    bench.append(0.0, makePicture(bgraLayout(161, 121), [](int x, int) {
                     return x < 80 ? PixelColor{255, 255, 255} : PixelColor{0, 0, 255};
                 }));
    bench.append(0.5, makeGreyPicture(80, 60, 128));  // from now on no scaling is needed
    ASSERT_EQ(bench.finish(), Status::completed);
    const Movie movie = bench.movie(MovieDetail::pictures);
    EXPECT_EQ(movie.width, 80);
    EXPECT_NEAR(movie.pictures.at(0).lumaAt(20, 30), 235, 2);
    EXPECT_NEAR(movie.pictures.at(0).lumaAt(60, 30), 32, 2);
    EXPECT_NEAR(movie.pictures.at(0).cbAt(60, 30), 240, 2);
    EXPECT_NEAR(movie.pictures.at(1).lumaAt(60, 30), 126, 2);
}

TEST(FFmpegAssetWriterTest, SizeBelowTheEncodersLeastIsAnErrorThatNamesIt) {
    AVVideoSettings settings = smallVideo(4, 4);
    settings.codec = CMVideoCodecType::hevc;
    WriterBench bench(settings);
    EXPECT_FALSE(bench.writer->startWriting());
    EXPECT_NE(textOf(bench.writer->error()).find("4 x 4 pixels with libx265"), std::string::npos)
        << textOf(bench.writer->error());
}

TEST(FFmpegAssetWriterTest, MissingEncoderSaysWhatToInstall) {
    FFmpegWriterParts parts;
    parts.h264Encoder = "no_such_encoder";
    parts.makeFile = [](const std::filesystem::path&) -> std::unique_ptr<OutputFile> {
        throw std::logic_error("no file without an encoder");
    };
    const auto writer = FFmpegMediaWriting(parts).makeAssetWriter("/memory", AVFileType::mpeg4);
    writer->add(std::make_shared<AVAssetWriterInput>(smallVideo()));
    EXPECT_FALSE(writer->startWriting());
    EXPECT_EQ(writer->status(), Status::failed);
    EXPECT_NE(textOf(writer->error()).find("no_such_encoder is missing. Install"), std::string::npos)
        << textOf(writer->error());
}

TEST(FFmpegAssetWriterTest, RefusesWhatItCannotWrite) {
    const auto writer = FFmpegMediaWriting().makeAssetWriter("/memory", AVFileType::mpeg4);
    EXPECT_TRUE(writer->canAdd(AVAssetWriterInput(smallVideo())));
    EXPECT_FALSE(writer->canAdd(AVAssetWriterInput(smallVideo(0, 48))));
    EXPECT_FALSE(writer->canAdd(AVAssetWriterInput(smallVideo(64, 20'000))));
    writer->add(std::make_shared<AVAssetWriterInput>(smallVideo()));
    EXPECT_FALSE(writer->canAdd(AVAssetWriterInput(smallVideo())));
}

TEST(FFmpegAssetWriterTest, MovieWithoutPicturesIsAnError) {
    WriterBench bench;
    ASSERT_TRUE(bench.start(CMTime::make(5, 1)));
    bench.writer->endSession(CMTime::make(6, 1));
    EXPECT_EQ(bench.finish(), Status::failed);
    EXPECT_NE(textOf(bench.writer->error()).find("No sample"), std::string::npos);
}

TEST(FFmpegAssetWriterTest, DestroyingItLeavesAMovieOfWhatWasWritten) {
    WriterBench bench;
    ASSERT_TRUE(bench.start());
    for (int index = 0; index < 30; ++index) {
        bench.append(index * 0.1, index % 2 == 0 ? bench.black : bench.white);
    }
    bench.input->append(sampleAt(3.0, bench.black));
    bench.writer.reset();
    EXPECT_TRUE(bench.file->isClosed());
    EXPECT_GE(bench.movie(MovieDetail::pictures).pictures.size(), 25U);
    EXPECT_FALSE(bench.input->isReadyForMoreMediaData());
}

TEST(FFmpegAssetWriterTest, MayBeDestroyedByItsOwnCompletion) {
    WriterBench bench;
    ASSERT_TRUE(bench.start());
    bench.append(0.0, bench.white);
    AVAssetWriter& writer = *bench.writer;
    writer.finishWriting([owner = std::move(bench.writer)]() mutable { owner.reset(); });
    Activity::waitUntilIdle();
    EXPECT_EQ(movieBoxes(bench.file->bytes()), finishedBoxes);
}

TEST(FFmpegAssetWriterTest, DestructionWaitsForAFinishUnderWay) {
    WriterBench bench;
    ASSERT_TRUE(bench.start());
    bench.append(0.0, bench.white);
    bool isFinished = false;
    bench.writer->finishWriting([&isFinished] { isFinished = true; });
    bench.writer.reset();
    EXPECT_TRUE(isFinished);
    EXPECT_EQ(movieBoxes(bench.file->bytes()), finishedBoxes);
}

}  // namespace
}  // namespace zorvane::testing
