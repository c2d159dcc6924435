// The conversion of a screen's usual pixels, many at a time with the processor's vector registers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zorvane {

/// The weights of blue, green and red in one kind of sample, times 2^14, and what is added to their sum.
struct ByteWeights {
    static constexpr int shift = 14;

    std::int32_t blue = 0;
    std::int32_t green = 0;
    std::int32_t red = 0;
    std::int32_t offset = 0;  ///< half a level included, so that the shift rounds
};

/// Two rows of BGRA pixels, and where their samples of 8 bits go.
struct ByteRowPair {
    const std::uint8_t* upper = nullptr;
    const std::uint8_t* lower = nullptr;
    std::uint8_t* upperLuma = nullptr;
    std::uint8_t* lowerLuma = nullptr;
    std::uint8_t* cb = nullptr;
    std::uint8_t* cr = nullptr;
};

struct ByteMatrix {
    ByteWeights luma;
    ByteWeights cb;
    ByteWeights cr;
};

/// Converts as many of the `width` pixels from the left as fit whole registers, and returns how many that are, an even
/// number: the rest is the caller's. 0 on a processor without the registers. Chroma is that of the mean of two by two
/// pixels, whose components are rounded up twice by at most half a level each.
std::int32_t convertRowsInVectors(const ByteRowPair& rows, std::int32_t width, const ByteMatrix& matrix);

}  // namespace zorvane
