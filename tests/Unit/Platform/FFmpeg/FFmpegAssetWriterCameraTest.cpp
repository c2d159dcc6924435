#include <gtest/gtest.h>

#include <array>
#include <string>

#include "WriterBench.hpp"

namespace zorvane::testing {
namespace {

using Samples = std::array<std::uint8_t, 3>;
using Status = AVAssetWriter::Status;

AVVideoSettings cameraVideo(std::int32_t width, std::int32_t height, CMVideoCodecType codec = CMVideoCodecType::h264) {
    AVVideoSettings settings = smallVideo(width, height);
    settings.codec = codec;
    settings.colorProperties.reset();
    return settings;
}

/// Quarters of four colours, whose samples no conversion of matrix or range would leave as they are.
Samples quarters(int x, int y, int width, int height) {
    constexpr std::array<Samples, 4> colors{Samples{60, 100, 220}, {160, 60, 40}, {40, 220, 110}, {230, 128, 128}};
    return colors[(x < width / 2 ? 0U : 1U) + (y < height / 2 ? 0U : 2U)];
}

void expectColor(const MoviePicture& picture, int x, int y, const Samples& expected) {
    EXPECT_NEAR(picture.lumaAt(x, y), expected[0], 2) << x << ", " << y;
    EXPECT_NEAR(picture.cbAt(x, y), expected[1], 2) << x << ", " << y;
    EXPECT_NEAR(picture.crAt(x, y), expected[2], 2) << x << ", " << y;
}

TEST(FFmpegAssetWriterCameraTest, PicturesKeepTheirSamplesAndTheMovieSaysTheirColours) {
    struct Case {
        int width;
        int height;
        CMVideoCodecType codec;
    };
    for (const Case& test : {Case{96, 64, CMVideoCodecType::h264}, Case{97, 65, CMVideoCodecType::h264},
                             Case{96, 64, CMVideoCodecType::hevc}}) {
        WriterBench bench(cameraVideo(test.width, test.height, test.codec));
        ASSERT_TRUE(bench.start()) << textOf(bench.writer->error());
        CVPixelLayout layout = videoLayout(test.width, test.height);
        layout.bytesPerRow += 14;
        bench.append(0.0,
                     makeVideoPicture(layout, [&](int x, int y) { return quarters(x, y, test.width, test.height); }));
        ASSERT_EQ(bench.finish(), Status::completed) << textOf(bench.writer->error());

        const Movie movie = bench.movie(MovieDetail::pictures);
        EXPECT_EQ(movie.pixelFormat, "yuv420p");
        EXPECT_EQ(movie.range + " " + movie.primaries + " " + movie.transfer + " " + movie.matrix,
                  "tv bt709 bt709 smpte170m");
        for (const auto& [x, y] : {std::pair{8, 8}, {test.width - 9, 8}, {8, test.height - 9}, {90, 58}}) {
            expectColor(movie.pictures.at(0), x, y, quarters(x, y, test.width, test.height));
        }
    }
}

TEST(FFmpegAssetWriterCameraTest, PicturesOfAnotherShapeKeepItWithBlackAround) {
    WriterBench bench(cameraVideo(96, 64));
    ASSERT_TRUE(bench.start());
    const auto append = [&](double time, int width, int height) {
        bench.append(time, makeVideoPicture(videoLayout(width, height),
                                            [&](int x, int y) { return quarters(x, y, width, height); }));
    };
    append(0.0, 96, 64);
    append(0.5, 129, 193);  // upright: 42 columns wide in the video
    append(1.0, 193, 129);  // merely larger
    ASSERT_EQ(bench.finish(), Status::completed) << textOf(bench.writer->error());

    const Movie movie = bench.movie(MovieDetail::pictures);
    ASSERT_EQ(movie.pictures.size(), 3U);
    constexpr Samples black{16, 128, 128};
    for (const auto& [x, y] : {std::pair{2, 2}, {20, 60}, {74, 2}, {94, 62}}) {
        expectColor(movie.pictures[1], x, y, black);
    }
    for (const auto& [x, y] : {std::pair{34, 8}, {60, 8}, {34, 56}, {60, 56}}) {
        expectColor(movie.pictures[1], x, y, quarters(x, y, 96, 64));
    }
    for (const auto& [x, y] : {std::pair{4, 4}, {90, 4}, {4, 58}, {90, 58}}) {
        expectColor(movie.pictures[0], x, y, quarters(x, y, 96, 64));
        expectColor(movie.pictures[2], x, y, quarters(x, y, 96, 64));
    }
}

TEST(FFmpegAssetWriterCameraTest, PicturesWhoseColoursAreNotTheVideosAreRefused) {
    const CVPixelBufferRef cameras = makeVideoPicture(videoLayout(64, 48), [](int, int) {
        return Samples{16, 128, 128};
    });
    struct Case {
        AVVideoSettings settings;
        CVPixelBufferRef picture;
    };
    for (const Case& test : {Case{smallVideo(), cameras}, Case{cameraVideo(64, 48), makeGreyPicture(64, 48, 0)}}) {
        WriterBench bench(test.settings);
        ASSERT_TRUE(bench.start());
        bench.append(0.0, test.picture);
        EXPECT_EQ(bench.writer->status(), Status::failed);
        EXPECT_NE(textOf(bench.writer->error()).find("need a video without color properties"), std::string::npos)
            << textOf(bench.writer->error());
    }
}

}  // namespace
}  // namespace zorvane::testing
