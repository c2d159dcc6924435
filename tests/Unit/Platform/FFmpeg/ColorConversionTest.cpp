#include "Zorvane/Platform/FFmpeg/ColorConversion.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include "tests/Support/PictureSource.hpp"

namespace zorvane {
namespace {

using testing::PixelColor;

using Color = std::array<double, 3>;  // 0 to 1

double decoded(double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double encoded(double light) {
    return light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

/// From one set of primaries to the other by way of CIE XYZ, from the published chromaticities.
Color throughXYZ(const Color& light, bool toWide) {
    constexpr double narrowToXYZ[3][3] = {{0.4123907993, 0.3575843394, 0.1804807884},
                                          {0.2126390059, 0.7151686788, 0.0721923154},
                                          {0.0193308187, 0.1191947798, 0.9505321522}};
    constexpr double wideToXYZ[3][3] = {{0.4865709486, 0.2656676932, 0.1982172852},
                                        {0.2289745641, 0.6917385218, 0.0792869141},
                                        {0.0, 0.0451133819, 1.0439443689}};
    constexpr double xyzToNarrow[3][3] = {{3.2409699419, -1.5373831776, -0.4986107603},
                                          {-0.9692436363, 1.8759675015, 0.0415550574},
                                          {0.0556300797, -0.2039769589, 1.0569715142}};
    constexpr double xyzToWide[3][3] = {{2.4934969119, -0.9313836179, -0.4027107845},
                                        {-0.8294889696, 1.7626640603, 0.0236246858},
                                        {0.0358458302, -0.0761723893, 0.9568845240}};
    const auto apply = [](const double(&matrix)[3][3], const Color& in) {
        Color out{};
        for (std::size_t row = 0; row < 3; ++row) {
            out[row] = matrix[row][0] * in[0] + matrix[row][1] * in[1] + matrix[row][2] * in[2];
        }
        return out;
    };
    return toWide ? apply(xyzToWide, apply(narrowToXYZ, light)) : apply(xyzToNarrow, apply(wideToXYZ, light));
}

struct Case {
    std::string name;
    CVPixelFormat format;
    CGColorSpaceName colorSpace;
    AVVideoColorPrimaries primaries;
    std::int32_t bitDepth;

    bool isWideSource() const { return colorSpace == CGColorSpaceName::displayP3; }
    bool isWideVideo() const { return primaries == AVVideoColorPrimaries::p3D65; }
};

class ColorConversionTest : public ::testing::TestWithParam<Case> {
  protected:
    static double peak() { return GetParam().format == CVPixelFormat::bgra ? 255 : 1023; }

    /// The exact colour that the video shows for a pixel.
    static Color shown(const PixelColor& pixel) {
        Color color{pixel[0] / peak(), pixel[1] / peak(), pixel[2] / peak()};
        if (GetParam().isWideSource() == GetParam().isWideVideo()) {
            return color;
        }
        for (double& value : color) {
            value = decoded(value);
        }
        color = throughXYZ(color, GetParam().isWideVideo());
        for (double& value : color) {
            value = encoded(std::clamp(value, 0.0, 1.0));
        }
        return color;
    }

    static double unit() { return GetParam().bitDepth == 8 ? 1 : 4; }
    static double luma(const Color& c) { return 0.2126 * c[0] + 0.7152 * c[1] + 0.0722 * c[2]; }
    static double exactY(const Color& c) { return (16 + 219 * luma(c)) * unit(); }
    static double exactCb(const Color& c) { return (128 + 224 * (c[2] - luma(c)) / 1.8556) * unit(); }
    static double exactCr(const Color& c) { return (128 + 224 * (c[0] - luma(c)) / 1.5748) * unit(); }

    /// The planes of a picture of that size, of which `colorAt` says the pixels; compared with the exact samples.
    static void expectExact(int width, int height, const std::function<PixelColor(int, int)>& colorAt) {
        CVPixelLayout layout = GetParam().format == CVPixelFormat::bgra
                                   ? testing::bgraLayout(width, height)
                                   : testing::l10rLayout(width, height, GetParam().colorSpace);
        layout.colorSpace = GetParam().colorSpace;
        layout.bytesPerRow += 12;
        const CVPixelBufferRef picture = testing::makePicture(layout, colorAt);
        const int halfWidth = (width + 1) / 2;
        const int halfHeight = (height + 1) / 2;
        std::array<std::vector<std::byte>, 3> memory;
        PlanarPicture planes{width, height, GetParam().bitDepth, {}, {}};
        for (std::size_t plane = 0; plane < 3; ++plane) {
            planes.bytesPerRow[plane] = (plane == 0 ? width : halfWidth) * 2 + 6;
            memory[plane].resize(
                static_cast<std::size_t>(planes.bytesPerRow[plane] * (plane == 0 ? height : halfHeight)));
            planes.planes[plane] = memory[plane].data();
        }
        ColorConverter({GetParam().format, GetParam().colorSpace, GetParam().primaries, GetParam().bitDepth})
            .convert(*picture, planes);

        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                ASSERT_NEAR(sample(planes, 0, x, y), exactY(shown(colorAt(x, y))), 1) << "Y at " << x << ", " << y;
            }
        }
        for (int y = 0; y < halfHeight; ++y) {
            for (int x = 0; x < halfWidth; ++x) {
                const Color mean = meanOfBlock(width, height, x, y, colorAt);
                ASSERT_NEAR(sample(planes, 1, x, y), exactCb(mean), 1) << "Cb at " << x << ", " << y;
                ASSERT_NEAR(sample(planes, 2, x, y), exactCr(mean), 1) << "Cr at " << x << ", " << y;
            }
        }
    }

    static Color meanOfBlock(int width, int height, int x, int y, const std::function<PixelColor(int, int)>& colorAt) {
        Color mean{};
        int count = 0;
        for (int row = 2 * y; row < std::min(2 * y + 2, height); ++row) {
            for (int column = 2 * x; column < std::min(2 * x + 2, width); ++column, ++count) {
                const Color color = shown(colorAt(column, row));
                std::transform(mean.begin(), mean.end(), color.begin(), mean.begin(), std::plus<>());
            }
        }
        for (double& value : mean) {
            value /= count;
        }
        return mean;
    }

    static int sample(const PlanarPicture& planes, std::size_t plane, int x, int y) {
        const std::byte* const row = planes.planes[plane] + planes.bytesPerRow[plane] * y;
        if (planes.bitDepth == 8) {
            return std::to_integer<int>(row[x]);
        }
        std::uint16_t value = 0;
        std::memcpy(&value, row + 2 * x, sizeof(value));
        return value;
    }
};

TEST_P(ColorConversionTest, IsWithinOneLevelForCornersOfTheColorCube) {
    const auto top = static_cast<std::uint32_t>(peak());
    expectExact(16, 2, [top](int x, int) {
        const auto corner = static_cast<unsigned>(x / 2);
        return PixelColor{(corner & 1U) * top, (corner >> 1U & 1U) * top, (corner >> 2U & 1U) * top};
    });
}

TEST_P(ColorConversionTest, IsWithinOneLevelForRandomPixels) {
    std::mt19937 random(709);
    std::vector<PixelColor> colors(129 * 65);
    const auto top = static_cast<std::uint32_t>(peak());
    for (PixelColor& color : colors) {
        for (std::uint32_t& value : color) {
            value = std::uniform_int_distribution<std::uint32_t>(0, top)(random);
        }
    }
    expectExact(129, 65, [&](int x, int y) { return colors[static_cast<std::size_t>(y * 129 + x)]; });
}

TEST_P(ColorConversionTest, TakesTheMeanOfWhatThereIsAtOddEdges) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 4}, {3, 1}, {7, 5}, {33, 3}}) {
        expectExact(width, height, [](int x, int y) {
            return PixelColor{static_cast<std::uint32_t>(x * 7), static_cast<std::uint32_t>(250 - x * 5),
                              static_cast<std::uint32_t>(y * 40)};
        });
    }
}

INSTANTIATE_TEST_SUITE_P(
    Conversions, ColorConversionTest,
    ::testing::Values(
        Case{"BGRATo8", CVPixelFormat::bgra, CGColorSpaceName::sRGB, AVVideoColorPrimaries::ituR709_2, 8},
        Case{"BGRATo10", CVPixelFormat::bgra, CGColorSpaceName::sRGB, AVVideoColorPrimaries::ituR709_2, 10},
        Case{"BGRAToWide10", CVPixelFormat::bgra, CGColorSpaceName::sRGB, AVVideoColorPrimaries::p3D65, 10},
        Case{"WideBGRATo8", CVPixelFormat::bgra, CGColorSpaceName::displayP3, AVVideoColorPrimaries::ituR709_2, 8},
        Case{"DeepTo8", CVPixelFormat::l10r, CGColorSpaceName::sRGB, AVVideoColorPrimaries::ituR709_2, 8},
        Case{"WideDeepTo8", CVPixelFormat::l10r, CGColorSpaceName::displayP3, AVVideoColorPrimaries::ituR709_2, 8},
        Case{"WideDeepToWide10", CVPixelFormat::l10r, CGColorSpaceName::displayP3, AVVideoColorPrimaries::p3D65, 10},
        Case{"DeepToWide10", CVPixelFormat::l10r, CGColorSpaceName::sRGB, AVVideoColorPrimaries::p3D65, 10}),
    [](const auto& testCase) { return testCase.param.name; });

}  // namespace
}  // namespace zorvane
