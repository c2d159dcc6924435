#include "Zorvane/Platform/FFmpeg/FFmpegVideoConverter.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "tests/Support/AllocationCounter.hpp"
#include "tests/Support/JPEGFile.hpp"

namespace zorvane::testing {
namespace {

using Format = AVVideoSourceFormat;
using Samples = std::array<std::uint8_t, 3>;

CVPixelBufferRef destination(CMVideoDimensions size) {
    const auto bytesPerRow = static_cast<std::size_t>(size.width + size.width % 2 + 6);
    return CVPixelBufferPool::make({size.width, size.height, bytesPerRow, CVPixelFormat::yCbCr420VideoRange}, 1)
        ->take();
}

int lumaOf(const CVPixelBuffer& picture, int x, int y) {
    return std::to_integer<int>(picture.bytes()[picture.layout().bytesPerRow * std::size_t(y) + std::size_t(x)]);
}

/// Cb is `index` 0, Cr 1; places count pairs of pixels.
int chromaOf(const CVPixelBuffer& picture, int index, int x, int y) {
    const std::size_t row = picture.layout().chromaOffset() + picture.layout().bytesPerRow * std::size_t(y);
    return std::to_integer<int>(picture.bytes()[row + std::size_t(2 * x + index)]);
}

/// Where a sample lies: the byte at `offset + x * step` of a row, or with `pairStep` at
/// `offset + x / 2 * pairStep + x % 2 * step`.
struct Place {
    std::size_t plane = 0;
    int offset = 0;
    int step = 1;
    int pairStep = 0;

    int byteAt(int x) const { return pairStep == 0 ? offset + x * step : offset + x / 2 * pairStep + x % 2 * step; }
};

struct RawFormat {
    std::string name;
    Format format;
    std::array<Place, 3> samples;  // Y, Cb, Cr, or red, green, blue
    int lumaBytesPerPair = 2;
    int planes = 1;
    bool hasRowsOfChroma = false;  // as many as there are of luma
    int chromaBytesPerPair = 0;    // in planes of their own
};

const std::vector<RawFormat> lumaFormats{{"yuyv", Format::yuyv, {Place{0, 0, 2, 4}, {0, 1, 4}, {0, 3, 4}}, 4, 1, true},
                                         {"uyvy", Format::uyvy, {Place{0, 1, 2, 4}, {0, 0, 4}, {0, 2, 4}}, 4, 1, true},
                                         {"yvyu", Format::yvyu, {Place{0, 0, 2, 4}, {0, 3, 4}, {0, 1, 4}}, 4, 1, true},
                                         {"nv12", Format::nv12, {Place{}, {1, 0, 2}, {1, 1, 2}}, 2, 2, false, 2},
                                         {"nv21", Format::nv21, {Place{}, {1, 1, 2}, {1, 0, 2}}, 2, 2, false, 2},
                                         {"i420", Format::i420, {Place{}, {1}, {2}}, 2, 3, false, 1},
                                         {"yv12", Format::yv12, {Place{}, {2}, {1}}, 2, 3, false, 1}};

const std::vector<RawFormat> colorFormats{{"rgb", Format::rgb, {Place{0, 0, 3}, {0, 1, 3}, {0, 2, 3}}, 6},
                                          {"bgr", Format::bgr, {Place{0, 2, 3}, {0, 1, 3}, {0, 0, 3}}, 6},
                                          {"rgbx", Format::rgbx, {Place{0, 0, 4}, {0, 1, 4}, {0, 2, 4}}, 8},
                                          {"bgrx", Format::bgrx, {Place{0, 2, 4}, {0, 1, 4}, {0, 0, 4}}, 8},
                                          {"xrgb", Format::xrgb, {Place{0, 1, 4}, {0, 2, 4}, {0, 3, 4}}, 8},
                                          {"xbgr", Format::xbgr, {Place{0, 3, 4}, {0, 2, 4}, {0, 1, 4}}, 8}};

const std::vector<CMVideoDimensions> sizes{{64, 48}, {131, 37}, {7, 5}, {2, 1}, {1, 1}};

/// A picture of random bytes, with padding behind each row but the last one of a plane.
class RandomPicture {
  public:
    RandomPicture(const RawFormat& format, CMVideoDimensions size) {
        std::mt19937 random(601);
        const int pairs = (size.width + 1) / 2;
        for (std::size_t plane = 0; plane < std::size_t(format.planes); ++plane) {
            const int lumaBytes = format.lumaBytesPerPair == 4 || size.width % 2 == 0
                                      ? pairs * format.lumaBytesPerPair
                                      : size.width * format.lumaBytesPerPair / 2;
            const auto rowBytes = std::size_t(plane == 0 ? lumaBytes : pairs * format.chromaBytesPerPair);
            const auto rows = std::size_t(plane == 0 ? size.height : (size.height + 1) / 2);
            source.bytesPerRow[plane] = rowBytes + 5 + plane;
            memory_[plane].resize(source.bytesPerRow[plane] * (rows - 1) + rowBytes);
            std::ranges::generate(memory_[plane], [&] { return static_cast<std::byte>(random()); });
            source.planes[plane] = memory_[plane];
        }
    }

    int at(const Place& place, int x, int y) const {
        const std::size_t row = source.bytesPerRow[place.plane] * std::size_t(y);
        return std::to_integer<int>(memory_[place.plane].at(row + std::size_t(place.byteAt(x))));
    }

    AVVideoSourcePicture source;

  private:
    std::array<std::vector<std::byte>, 3> memory_;
};

TEST(FFmpegVideoConverterTest, SamplesOfLumaAndChromaAreRearranged) {
    for (const RawFormat& format : lumaFormats) {
        for (const CMVideoDimensions size : sizes) {
            SCOPED_TRACE(format.name + " " + std::to_string(size.width) + " x " + std::to_string(size.height));
            const RandomPicture picture(format, size);
            const CVPixelBufferRef to = destination(size);
            FFmpegVideoConverting().makeConverter(format.format, size)->convert(picture.source, *to);
            for (int y = 0; y < size.height; ++y) {
                for (int x = 0; x < size.width; ++x) {
                    ASSERT_EQ(lumaOf(*to, x, y), picture.at(format.samples[0], x, y)) << x << ", " << y;
                }
            }
            for (int place = 0; place < (size.width + 1) / 2 * ((size.height + 1) / 2); ++place) {
                const int x = place % ((size.width + 1) / 2);
                const int y = place / ((size.width + 1) / 2);
                for (const int index : {0, 1}) {
                    const Place& sample = format.samples[std::size_t(1 + index)];
                    const int upper = picture.at(sample, x, format.hasRowsOfChroma ? 2 * y : y);
                    const int lower =
                        format.hasRowsOfChroma ? picture.at(sample, x, std::min(2 * y + 1, size.height - 1)) : upper;
                    ASSERT_EQ(chromaOf(*to, index, x, y), (upper + lower + 1) / 2) << x << ", " << y;
                }
            }
        }
    }
}

TEST(FFmpegVideoConverterTest, ColoursAreWithinTwoLevelsOfTheMatrixOf601) {
    for (const RawFormat& format : colorFormats) {
        for (const CMVideoDimensions size : sizes) {
            SCOPED_TRACE(format.name + " " + std::to_string(size.width) + " x " + std::to_string(size.height));
            const RandomPicture picture(format, size);
            const CVPixelBufferRef to = destination(size);
            FFmpegVideoConverting().makeConverter(format.format, size)->convert(picture.source, *to);
            const auto component = [&](std::size_t index, int x, int y) {
                return picture.at(format.samples[index], std::min(x, size.width - 1), std::min(y, size.height - 1)) /
                       255.0;
            };
            const auto luma = [&](int x, int y) {
                return 0.299 * component(0, x, y) + 0.587 * component(1, x, y) + 0.114 * component(2, x, y);
            };
            const auto mean = [](const auto& value, int x, int y) {
                return (value(x, y) + value(x + 1, y) + value(x, y + 1) + value(x + 1, y + 1)) / 4;
            };
            for (int y = 0; y < size.height; ++y) {
                for (int x = 0; x < size.width; ++x) {
                    ASSERT_NEAR(lumaOf(*to, x, y), 16 + 219 * luma(x, y), 1) << x << ", " << y;
                    const auto blue = [&](int column, int row) {
                        return component(2, column, row) - luma(column, row);
                    };
                    const auto red = [&](int column, int row) { return component(0, column, row) - luma(column, row); };
                    if (x % 2 == 0 && y % 2 == 0) {
                        ASSERT_NEAR(chromaOf(*to, 0, x / 2, y / 2), 128 + 224 * mean(blue, x, y) / 1.772, 2);
                        ASSERT_NEAR(chromaOf(*to, 1, x / 2, y / 2), 128 + 224 * mean(red, x, y) / 1.402, 2);
                    }
                }
            }
        }
    }
}

int narrowedLuma(int level) {
    return static_cast<int>(std::lround(16 + level * 219 / 255.0));
}

int narrowedChroma(int level) {
    return static_cast<int>(std::lround(128 + (level - 128) * 224 / 255.0));
}

TEST(FFmpegVideoConverterTest, GreyIsBroughtToVideoRangeAndHasNoColour) {
    constexpr CMVideoDimensions size{257, 3};
    std::vector<std::byte> levels(257 * 3);
    for (std::size_t index = 0; index < levels.size(); ++index) {
        levels[index] = static_cast<std::byte>(index % 257);
    }
    const CVPixelBufferRef to = destination(size);
    FFmpegVideoConverting().makeConverter(Format::gray8, size)->convert({{levels}, {257}}, *to);
    for (int x = 0; x < 257; ++x) {
        ASSERT_EQ(lumaOf(*to, x, 2), narrowedLuma(x % 256));
        ASSERT_EQ(chromaOf(*to, x % 2, x / 2, 1), 128);
    }
}

TEST(FFmpegVideoConverterTest, PictureThatIsCutOffIsAnError) {
    for (const auto* formats : {&lumaFormats, &colorFormats}) {
        for (const RawFormat& format : *formats) {
            const CMVideoDimensions size{33, 7};
            const CVPixelBufferRef to = destination(size);
            const auto converter = FFmpegVideoConverting().makeConverter(format.format, size);
            for (std::size_t plane = 0; plane < std::size_t(format.planes); ++plane) {
                RandomPicture picture(format, size);
                auto& bytes = picture.source.planes[plane];
                bytes = bytes.first(bytes.size() - 1);
                EXPECT_THROW(converter->convert(picture.source, *to), NSError) << format.name << " " << plane;
            }
        }
    }
    EXPECT_THROW(FFmpegVideoConverting().makeConverter(Format::nv12, {0, 480}), NSError);
}

/// Four fields of one colour each; chroma beyond video range.
Samples fields(int x, int y, CMVideoDimensions size) {
    constexpr std::array<Samples, 4> colors{Samples{0, 90, 240}, {255, 128, 128}, {76, 20, 255}, {150, 200, 60}};
    return colors[(x < size.width / 2 ? 0U : 1U) + (y < size.height / 2 ? 0U : 2U)];
}

AVVideoSourcePicture pictureOf(const std::vector<std::byte>& file) {
    return {{std::span(file)}, {}};
}

void expectFields(const CVPixelBuffer& picture) {
    const CMVideoDimensions size{picture.layout().width, picture.layout().height};
    for (const int y : {1, size.height / 4, size.height - 1}) {
        for (const int x : {0, size.width / 4, size.width - 1}) {
            const Samples expected = fields(x, y, size);
            ASSERT_NEAR(lumaOf(picture, x, y), narrowedLuma(expected[0]), 1) << x << ", " << y;
            ASSERT_NEAR(chromaOf(picture, 0, x / 2, y / 2), narrowedChroma(expected[1]), 1) << x << ", " << y;
            ASSERT_NEAR(chromaOf(picture, 1, x / 2, y / 2), narrowedChroma(expected[2]), 1) << x << ", " << y;
        }
    }
}

TEST(FFmpegVideoConverterTest, JPEGsOfEveryKindOfChromaComeOutInVideoRange) {
    for (const JPEGChroma chroma : {JPEGChroma::half, JPEGChroma::halfWidth, JPEGChroma::full}) {
        for (const CMVideoDimensions size : {CMVideoDimensions{64, 64}, {99, 67}}) {
            SCOPED_TRACE(std::to_string(int(chroma)) + " " + std::to_string(size.width));
            const auto file =
                makeJPEG(size.width, size.height, chroma, [=](int x, int y) { return fields(x, y, size); });
            const auto converter = FFmpegVideoConverting().makeConverter(Format::jpeg, size);
            for (const auto& kind : {file, withoutHuffmanTables(file)}) {
                const CVPixelBufferRef to = destination(size);
                converter->convert(pictureOf(kind), *to);
                expectFields(*to);
            }
        }
    }
    const CVPixelBufferRef to = destination({8, 8});
    FFmpegVideoConverting().makeConverter(Format::jpeg, {8, 8})->convert(pictureOf(makeGreyJPEG()), *to);
    EXPECT_EQ(lumaOf(*to, 7, 7), narrowedLuma(228));
    EXPECT_EQ(chromaOf(*to, 1, 3, 3), 128);
}

TEST(FFmpegVideoConverterTest, BrokenJPEGsAreErrorsAndTheNextPictureIsGoodAgain) {
    constexpr CMVideoDimensions size{160, 128};
    std::mt19937 random(1);
    const auto noise = makeJPEG(size.width, size.height, JPEGChroma::halfWidth, [&](int, int) {
        return Samples{std::uint8_t(random()), std::uint8_t(random()), std::uint8_t(random())};
    });
    const auto good =
        makeJPEG(size.width, size.height, JPEGChroma::halfWidth, [](int x, int y) { return fields(x, y, size); });
    std::vector<std::vector<std::byte>> broken;
    for (const double share : {0.0, 0.001, 0.01, 0.2, 0.9, 0.99}) {
        broken.emplace_back(noise.begin(), noise.begin() + std::lround(share * double(noise.size())));
    }
    broken.emplace_back(noise.size());  // zeros
    broken.push_back(noise);
    std::fill(broken.back().begin() + std::ptrdiff_t(noise.size() / 2), broken.back().end(), std::byte{0xFF});
    for (const CMVideoDimensions other : {CMVideoDimensions{80, 64}, {320, 256}, {128, 160}}) {
        broken.push_back(makeJPEG(other.width, other.height, JPEGChroma::half, [](int, int) { return Samples{}; }));
    }
    const auto converter = FFmpegVideoConverting().makeConverter(Format::jpeg, size);
    const CVPixelBufferRef to = destination(size);
    // Some devices never write the marker of the end.
    converter->convert(pictureOf({good.begin(), good.end() - 2}), *to);
    expectFields(*to);
    ::testing::internal::CaptureStderr();
    for (std::size_t index = 0; index < broken.size(); ++index) {
        EXPECT_THROW(converter->convert(pictureOf(broken[index]), *to), NSError) << index;
        converter->convert(pictureOf(good), *to);
        expectFields(*to);
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST(FFmpegVideoConverterTest, AllocatesNothingOfItsOwnAfterTheFirstPicture) {
    if (!AllocationCounter::isAvailable()) {
        GTEST_SKIP() << "allocations can't be counted under a sanitizer";
    }
    constexpr CMVideoDimensions size{640, 480};
    const CVPixelBufferRef to = destination(size);
    const auto count = [&](Format format, const AVVideoSourcePicture& picture) {
        const auto converter = FFmpegVideoConverting().makeConverter(format, size);
        converter->convert(picture, *to);
        const AllocationCounter counter;
        converter->convert(picture, *to);
        return counter.count();
    };
    for (const auto* formats : {&lumaFormats, &colorFormats}) {
        for (const RawFormat& format : *formats) {
            EXPECT_EQ(count(format.format, RandomPicture(format, size).source), 0U) << format.name;
        }
    }
    const auto file = makeJPEG(size.width, size.height, JPEGChroma::full, [](int, int) { return Samples{}; });
    EXPECT_EQ(count(Format::jpeg, pictureOf(file)), 0U);
}

}  // namespace
}  // namespace zorvane::testing
