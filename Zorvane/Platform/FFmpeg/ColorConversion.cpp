#include "Zorvane/Platform/FFmpeg/ColorConversion.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "Zorvane/Platform/FFmpeg/ColorConversionVector.hpp"

namespace zorvane {
namespace {

constexpr double redWeight = 0.2126;
constexpr double greenWeight = 0.7152;
constexpr double blueWeight = 0.0722;

struct Pixel {
    std::int32_t red;
    std::int32_t green;
    std::int32_t blue;

    Pixel operator+(const Pixel& other) const { return {red + other.red, green + other.green, blue + other.blue}; }
};

/// The largest value of a pixel's component.
std::int32_t peak(CVPixelFormat format) {
    return format == CVPixelFormat::bgra ? 255 : 1023;
}

std::uint32_t readWord(const std::byte* bytes) {
    std::uint32_t word;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

struct BGRAReader {
    static constexpr std::uint32_t colorMask = 0x00FFFFFF;
    static Pixel read(std::uint32_t word) {
        return {static_cast<std::int32_t>(word >> 16 & 255), static_cast<std::int32_t>(word >> 8 & 255),
                static_cast<std::int32_t>(word & 255)};
    }
};

struct L10RReader {
    static constexpr std::uint32_t colorMask = 0x3FFFFFFF;
    static Pixel read(std::uint32_t word) {
        return {static_cast<std::int32_t>(word >> 20 & 1023), static_cast<std::int32_t>(word >> 10 & 1023),
                static_cast<std::int32_t>(word & 1023)};
    }
};

double linear(double encoded) {
    return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

double encoded(double linearLight) {
    return linearLight <= 0.0031308 ? linearLight * 12.92 : 1.055 * std::pow(linearLight, 1 / 2.4) - 0.055;
}

using Primaries = std::array<std::array<double, 3>, 3>;

// Linear light of one set of primaries told in the other; both have the white point D65.
constexpr Primaries displayP3ToBT709{
    {{1.2249401763, -0.2249401763, 0}, {-0.0420569547, 1.0420569547, 0}, {-0.0196375546, -0.0786360456, 1.0982736002}}};
constexpr Primaries bt709ToDisplayP3{
    {{0.8224619687, 0.1775380313, 0}, {0.0331941989, 0.9668058011, 0}, {0.0170826307, 0.0723974407, 0.9105199286}}};

bool isWide(CGColorSpaceName colorSpace) {
    return colorSpace == CGColorSpaceName::displayP3;
}

bool isWide(AVVideoColorPrimaries primaries) {
    return primaries == AVVideoColorPrimaries::p3D65;
}

}  // namespace

/// The weights of a pixel's components in fixed point, of which the results are `value >> shift`.
struct ColorConverter::Matrix {
    static constexpr int shift = 16;

    struct Row {
        std::int32_t red;
        std::int32_t green;
        std::int32_t blue;
        std::int32_t offset;

        /// The sample for a sum of `1 << extraShift` pixels.
        std::int32_t apply(const Pixel& pixel, int extraShift) const {
            const std::int64_t sum =
                std::int64_t{red} * pixel.red + std::int64_t{green} * pixel.green + std::int64_t{blue} * pixel.blue;
            const std::int64_t rounding = std::int64_t{offset} << extraShift;
            return static_cast<std::int32_t>((sum + rounding) >> (shift + extraShift));
        }
    };

    Matrix(std::int32_t peak, std::int32_t bitDepth) {
        const double unit = std::ldexp(1.0, bitDepth - 8);
        luma = row({redWeight, greenWeight, blueWeight}, 219 * unit / peak, 16 * unit);
        cb = row({-redWeight, -greenWeight, 1 - blueWeight}, 224 * unit / peak / (2 * (1 - blueWeight)), 128 * unit);
        cr = row({1 - redWeight, -greenWeight, -blueWeight}, 224 * unit / peak / (2 * (1 - redWeight)), 128 * unit);
    }

    static Row row(const std::array<double, 3>& weights, double scale, double offset) {
        const double one = std::ldexp(1.0, shift);
        const auto fixed = [one](double value) { return static_cast<std::int32_t>(std::lround(value * one)); };
        return {fixed(weights[0] * scale), fixed(weights[1] * scale), fixed(weights[2] * scale), fixed(offset + 0.5)};
    }

    /// The same for samples and components of 8 bits, for the conversion in vectors.
    ByteMatrix forBytes() const {
        const auto rounded = [](const Row& row) {
            const auto weight = [](std::int32_t value) {
                return (value + (1 << (shift - ByteWeights::shift - 1))) >> (shift - ByteWeights::shift);
            };
            return ByteWeights{weight(row.blue), weight(row.green), weight(row.red), weight(row.offset)};
        };
        return {rounded(luma), rounded(cb), rounded(cr)};
    }

    Row luma;
    Row cb;
    Row cr;
};

/// Moves pixels from one set of primaries to the other, through tables between encoded values and linear light.
class ColorConverter::GamutMap {
  public:
    /// The largest value of a mapped pixel's component: finer than any pixel format, so that nothing is rounded twice.
    static constexpr std::int32_t peak = 16383;

    GamutMap(std::int32_t sourcePeak, const Primaries& primaries) : primaries_(primaries) {
        for (std::int32_t value = 0; value <= sourcePeak; ++value) {
            linear_.push_back(static_cast<float>(linear(double(value) / sourcePeak)));
        }
        for (std::size_t step = 0; step <= steps; ++step) {
            encoded_.push_back(static_cast<std::int32_t>(std::lround(encoded(double(step) / steps) * peak)));
        }
    }

    Pixel map(const Pixel& pixel) const {
        const std::array<float, 3> light{linear_[static_cast<std::size_t>(pixel.red)],
                                         linear_[static_cast<std::size_t>(pixel.green)],
                                         linear_[static_cast<std::size_t>(pixel.blue)]};
        return {component(primaries_[0], light), component(primaries_[1], light), component(primaries_[2], light)};
    }

  private:
    // Fine enough where the curve is steepest, at 10 bits.
    static constexpr std::size_t steps = 65535;

    std::int32_t component(const std::array<double, 3>& weights, const std::array<float, 3>& light) const {
        const double sum = weights[0] * light[0] + weights[1] * light[1] + weights[2] * light[2];
        return encoded_[static_cast<std::size_t>(std::clamp(sum, 0.0, 1.0) * steps + 0.5)];
    }

    const Primaries primaries_;
    std::vector<float> linear_;
    std::vector<std::int32_t> encoded_;
};

ColorConverter::ColorConverter(const ColorConversion& conversion)
    : conversion_(conversion),
      gamutMap_(makeGamutMap(conversion)),
      matrix_(makeMatrix(conversion, gamutMap_ != nullptr)) {}

std::unique_ptr<const ColorConverter::GamutMap> ColorConverter::makeGamutMap(const ColorConversion& conversion) {
    if (isWide(conversion.colorSpace) == isWide(conversion.primaries)) {
        return nullptr;
    }
    return std::make_unique<const GamutMap>(peak(conversion.format),
                                            isWide(conversion.primaries) ? bt709ToDisplayP3 : displayP3ToBT709);
}

std::unique_ptr<const ColorConverter::Matrix> ColorConverter::makeMatrix(const ColorConversion& conversion,
                                                                         bool isMapped) {
    return std::make_unique<const Matrix>(isMapped ? GamutMap::peak : peak(conversion.format), conversion.bitDepth);
}

ColorConverter::~ColorConverter() = default;

namespace {

/// One conversion, with everything that doesn't change from pixel to pixel known to the compiler.
template <class Reader, class Sample, class Matrix, class GamutMap>
class Kernel {
  public:
    Kernel(const CVPixelBuffer& picture, const PlanarPicture& destination, const Matrix& matrix, const GamutMap* map)
        : picture_(picture), destination_(destination), matrix_(matrix), map_(map) {}

    /// Converts the columns from `firstColumn` on, which is even.
    void run(std::int32_t firstColumn) {
        for (std::int32_t y = 0; y < destination_.height; y += 2) {
            for (std::int32_t x = firstColumn; x < destination_.width; x += 2) {
                convertBlock(x, y);
            }
        }
    }

  private:
    // At an odd edge the block's missing pixels are those beside them, so the mean is that of what there is.
    void convertBlock(std::int32_t x, std::int32_t y) {
        const std::int32_t right = std::min(x + 1, destination_.width - 1);
        const std::int32_t below = std::min(y + 1, destination_.height - 1);
        const std::array words{word(x, y), word(right, y), word(x, below), word(right, below)};
        if (words[0] != words[1] || words[0] != words[2] || words[0] != words[3]) {
            const Pixel sum = convertPixel(words[0], x, y) + convertPixel(words[1], right, y) +
                              convertPixel(words[2], x, below) + convertPixel(words[3], right, below);
            write(1, x / 2, y / 2, matrix_.cb.apply(sum, 2));
            write(2, x / 2, y / 2, matrix_.cr.apply(sum, 2));
            return;
        }
        const Uniform& uniform = samplesOf(words[0]);
        write(0, x, y, uniform.luma);
        write(0, right, y, uniform.luma);
        write(0, x, below, uniform.luma);
        write(0, right, below, uniform.luma);
        write(1, x / 2, y / 2, uniform.cb);
        write(2, x / 2, y / 2, uniform.cr);
    }

    /// The samples of a block of one colour. Neighbouring blocks of a screen mostly have the same one.
    struct Uniform {
        std::uint32_t word = ~Reader::colorMask;  // no pixel's
        std::int32_t luma = 0;
        std::int32_t cb = 0;
        std::int32_t cr = 0;
    };

    const Uniform& samplesOf(std::uint32_t word) {
        if (uniform_.word != word) {
            const Pixel pixel = mapped(word);
            uniform_ = {word, matrix_.luma.apply(pixel, 0), matrix_.cb.apply(pixel, 0), matrix_.cr.apply(pixel, 0)};
        }
        return uniform_;
    }

    Pixel convertPixel(std::uint32_t word, std::int32_t x, std::int32_t y) const {
        const Pixel pixel = mapped(word);
        write(0, x, y, matrix_.luma.apply(pixel, 0));
        return pixel;
    }

    Pixel mapped(std::uint32_t word) const {
        const Pixel read = Reader::read(word);
        return map_ ? map_->map(read) : read;
    }

    std::uint32_t word(std::int32_t x, std::int32_t y) const {
        const std::size_t offset = picture_.layout().bytesPerRow * static_cast<std::size_t>(y);
        return readWord(picture_.bytes() + offset + static_cast<std::size_t>(x) * 4) & Reader::colorMask;
    }

    void write(std::size_t plane, std::int32_t x, std::int32_t y, std::int32_t value) const {
        std::byte* row = destination_.planes[plane] + destination_.bytesPerRow[plane] * y;
        reinterpret_cast<Sample*>(row)[x] = static_cast<Sample>(value);
    }

    const CVPixelBuffer& picture_;
    const PlanarPicture& destination_;
    const Matrix& matrix_;
    const GamutMap* map_;
    Uniform uniform_;
};

template <class Reader, class Matrix, class GamutMap>
void convertAs(const CVPixelBuffer& picture, const PlanarPicture& destination, const Matrix& matrix,
               const GamutMap* map, std::int32_t firstColumn = 0) {
    if (destination.bitDepth == 8) {
        Kernel<Reader, std::uint8_t, Matrix, GamutMap>(picture, destination, matrix, map).run(firstColumn);
    } else {
        Kernel<Reader, std::uint16_t, Matrix, GamutMap>(picture, destination, matrix, map).run(firstColumn);
    }
}

const std::uint8_t* sourceRow(const CVPixelBuffer& picture, std::int32_t y) {
    return reinterpret_cast<const std::uint8_t*>(picture.bytes()) +
           picture.layout().bytesPerRow * static_cast<std::size_t>(y);
}

std::uint8_t* destinationRow(const PlanarPicture& destination, std::size_t plane, std::int32_t y) {
    return reinterpret_cast<std::uint8_t*>(destination.planes[plane] + destination.bytesPerRow[plane] * y);
}

/// Converts in vectors what fits them, and returns the first column that is left to do.
std::int32_t convertColumnsInVectors(const CVPixelBuffer& picture, const PlanarPicture& destination,
                                     const ByteMatrix& matrix) {
    std::int32_t done = 0;
    for (std::int32_t y = 0; y < destination.height; y += 2) {
        const std::int32_t below = std::min(y + 1, destination.height - 1);
        const ByteRowPair rows{sourceRow(picture, y),
                               sourceRow(picture, below),
                               destinationRow(destination, 0, y),
                               destinationRow(destination, 0, below),
                               destinationRow(destination, 1, y / 2),
                               destinationRow(destination, 2, y / 2)};
        done = convertRowsInVectors(rows, destination.width, matrix);
    }
    return done;
}

}  // namespace

void ColorConverter::convert(const CVPixelBuffer& picture, const PlanarPicture& destination) const {
    if (conversion_.format == CVPixelFormat::bgra) {
        const bool isPlain = conversion_.bitDepth == 8 && !gamutMap_;
        const std::int32_t done = isPlain ? convertColumnsInVectors(picture, destination, matrix_->forBytes()) : 0;
        convertAs<BGRAReader>(picture, destination, *matrix_, gamutMap_.get(), done);
    } else {
        convertAs<L10RReader>(picture, destination, *matrix_, gamutMap_.get());
    }
}

}  // namespace zorvane
