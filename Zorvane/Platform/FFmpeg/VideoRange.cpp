#include "Zorvane/Platform/FFmpeg/VideoRange.hpp"

#include <algorithm>
#include <array>
#include <cstring>

namespace zorvane {
namespace {

/// A sample becomes `weight / 65536` of itself and `offset / 256` more, half a level for rounding included. 16 bits
/// hold everything on the way, so that the compiler's vectors are full.
struct Scale {
    std::uint32_t weight;
    std::uint32_t offset;
};

constexpr Scale scaleFor(double levels, double offset) {
    return {static_cast<std::uint32_t>(levels / 255 * 65536 + 0.5),
            static_cast<std::uint32_t>((offset + 0.5) * 256 + 0.5)};
}

constexpr Scale lumaScale = scaleFor(219, 16);
constexpr Scale chromaScale = scaleFor(224, 128 - 128 * 224.0 / 255);

/// In blocks of a fixed size, which compilers turn into vectors without further ado.
template <Scale scale>
void narrow(const std::uint8_t* from, std::uint8_t* to, std::size_t count) {
    std::array<std::uint8_t, 64> block{};
    for (std::size_t done = 0; done < count; done += block.size()) {
        const std::size_t length = std::min(block.size(), count - done);
        std::memcpy(block.data(), from + done, length);
        for (std::uint8_t& sample : block) {
            const auto scaled = static_cast<std::uint16_t>((std::uint32_t{sample} << 8) * scale.weight >> 16);
            sample = static_cast<std::uint8_t>((scaled + scale.offset) >> 8);
        }
        std::memcpy(to + done, block.data(), length);
    }
}

}  // namespace

void narrowLuma(const std::uint8_t* from, std::uint8_t* to, std::size_t count) {
    narrow<lumaScale>(from, to, count);
}

void narrowChroma(const std::uint8_t* from, std::uint8_t* to, std::size_t count) {
    narrow<chromaScale>(from, to, count);
}

}  // namespace zorvane
