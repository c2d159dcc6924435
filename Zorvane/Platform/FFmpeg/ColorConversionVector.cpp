#include "Zorvane/Platform/FFmpeg/ColorConversionVector.hpp"

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace zorvane {

#ifdef __x86_64__
namespace {

#define ZV_AVX2 __attribute__((target("avx2")))

constexpr std::int32_t pixelsPerStep = 32;  // four registers of eight pixels

// The products of bytes are summed in 16 bits, where weights of 14 bits have no room. So each weight is a coarse part
// times 128 and a fine part, both of which fit a signed byte.
struct Weights {
    __m256i coarse;
    __m256i fine;
    __m256i offset;
};

struct Registers {
    __m256i first, second, third, fourth;
};

struct Splits {
    std::int8_t coarse;
    std::int8_t fine;
};

constexpr Splits split(std::int32_t weight) {
    const std::int32_t coarse = (weight + 64) >> 7;
    return {static_cast<std::int8_t>(coarse), static_cast<std::int8_t>(weight - coarse * 128)};
}

// One pixel's four weights, in the order of its bytes; alpha has none.
constexpr std::int32_t packed(std::int8_t blue, std::int8_t green, std::int8_t red) {
    return static_cast<std::int32_t>(static_cast<std::uint8_t>(blue) |
                                     static_cast<std::uint32_t>(static_cast<std::uint8_t>(green)) << 8 |
                                     static_cast<std::uint32_t>(static_cast<std::uint8_t>(red)) << 16);
}

ZV_AVX2 inline Weights broadcast(const ByteWeights& weights) {
    const Splits blue = split(weights.blue);
    const Splits green = split(weights.green);
    const Splits red = split(weights.red);
    return {_mm256_set1_epi32(packed(blue.coarse, green.coarse, red.coarse)),
            _mm256_set1_epi32(packed(blue.fine, green.fine, red.fine)), _mm256_set1_epi32(weights.offset)};
}

/// Eight samples of 32 bits from eight pixels.
ZV_AVX2 inline __m256i weigh(__m256i pixels, const Weights& weights) {
    const __m256i coarse = _mm256_madd_epi16(_mm256_maddubs_epi16(pixels, weights.coarse), _mm256_set1_epi16(128));
    const __m256i fine = _mm256_madd_epi16(_mm256_maddubs_epi16(pixels, weights.fine), _mm256_set1_epi16(1));
    const __m256i sum = _mm256_add_epi32(_mm256_add_epi32(coarse, fine), weights.offset);
    return _mm256_srai_epi32(sum, ByteWeights::shift);
}

/// 32 samples in their order. Packing interleaves the halves of registers, so they are put right at the end.
ZV_AVX2 inline __m256i weighAll(const Registers& pixels, const Weights& weights) {
    const __m256i left = _mm256_packs_epi32(weigh(pixels.first, weights), weigh(pixels.second, weights));
    const __m256i right = _mm256_packs_epi32(weigh(pixels.third, weights), weigh(pixels.fourth, weights));
    return _mm256_permutevar8x32_epi32(_mm256_packus_epi16(left, right), _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}

/// 16 samples in their order.
ZV_AVX2 inline __m128i weighPair(__m256i left, __m256i right, const Weights& weights) {
    const __m256i words = _mm256_packs_epi32(weigh(left, weights), weigh(right, weights));
    const __m256i bytes = _mm256_packus_epi16(words, words);
    return _mm256_castsi256_si128(_mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 4, 1, 5, 0, 4, 1, 5)));
}

ZV_AVX2 inline Registers load(const std::uint8_t* pixels) {
    const auto* registers = reinterpret_cast<const __m256i*>(pixels);
    return {_mm256_loadu_si256(registers), _mm256_loadu_si256(registers + 1), _mm256_loadu_si256(registers + 2),
            _mm256_loadu_si256(registers + 3)};
}

/// The means of neighbours: eight pixels from sixteen, in their order.
ZV_AVX2 inline __m256i meanOfNeighbours(__m256i left, __m256i right) {
    const __m256 a = _mm256_castsi256_ps(left);
    const __m256 b = _mm256_castsi256_ps(right);
    const __m256i even = _mm256_castps_si256(_mm256_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)));
    const __m256i odd = _mm256_castps_si256(_mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1)));
    return _mm256_permute4x64_epi64(_mm256_avg_epu8(even, odd), _MM_SHUFFLE(3, 1, 2, 0));
}

ZV_AVX2 std::int32_t convertRowsAVX2(const ByteRowPair& rows, std::int32_t width, const ByteMatrix& matrix) {
    const Weights luma = broadcast(matrix.luma);
    const Weights cbWeights = broadcast(matrix.cb);
    const Weights crWeights = broadcast(matrix.cr);
    std::int32_t x = 0;
    for (; x + pixelsPerStep <= width; x += pixelsPerStep) {
        const Registers upper = load(rows.upper + x * 4);
        const Registers lower = load(rows.lower + x * 4);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(rows.upperLuma + x), weighAll(upper, luma));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(rows.lowerLuma + x), weighAll(lower, luma));
        const __m256i left =
            meanOfNeighbours(_mm256_avg_epu8(upper.first, lower.first), _mm256_avg_epu8(upper.second, lower.second));
        const __m256i right =
            meanOfNeighbours(_mm256_avg_epu8(upper.third, lower.third), _mm256_avg_epu8(upper.fourth, lower.fourth));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(rows.cb + x / 2), weighPair(left, right, cbWeights));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(rows.cr + x / 2), weighPair(left, right, crWeights));
    }
    return x;
}

}  // namespace

std::int32_t convertRowsInVectors(const ByteRowPair& rows, std::int32_t width, const ByteMatrix& matrix) {
    static const bool hasAVX2 = __builtin_cpu_supports("avx2");
    return hasAVX2 ? convertRowsAVX2(rows, width, matrix) : 0;
}

#else

std::int32_t convertRowsInVectors(const ByteRowPair&, std::int32_t, const ByteMatrix&) {
    return 0;
}

#endif

}  // namespace zorvane
