#include "Zorvane/Platform/Linux/X11/EDID.hpp"

#include <algorithm>
#include <array>
#include <numeric>

namespace zorvane {
namespace {

constexpr std::size_t blockSize = 128;
constexpr std::size_t firstDescriptor = 54;
constexpr std::size_t descriptorSize = 18;
constexpr std::size_t descriptorCount = 4;
constexpr std::uint8_t nameTag = 0xFC;

bool isIntact(std::span<const std::uint8_t> block) {
    constexpr std::array<std::uint8_t, 8> header{0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
    const auto sum = std::accumulate(block.begin(), block.end(), std::uint8_t{0},
                                     [](std::uint8_t a, std::uint8_t b) { return static_cast<std::uint8_t>(a + b); });
    return sum == 0 && std::equal(header.begin(), header.end(), block.begin());
}

/// Text descriptors begin with three zero bytes around the tag; the text ends with a line feed and spaces.
std::optional<std::string> textOf(std::span<const std::uint8_t> descriptor, std::uint8_t tag) {
    if (descriptor[0] != 0 || descriptor[1] != 0 || descriptor[2] != 0 || descriptor[3] != tag) {
        return std::nullopt;
    }
    std::string text;
    for (const std::uint8_t byte : descriptor.subspan(5)) {
        if (byte == '\n') {
            break;
        }
        text += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '?';
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text.empty() ? std::nullopt : std::optional(text);
}

std::optional<std::string> nameIn(std::span<const std::uint8_t> block) {
    for (std::size_t index = 0; index < descriptorCount; ++index) {
        if (auto name = textOf(block.subspan(firstDescriptor + index * descriptorSize, descriptorSize), nameTag)) {
            return name;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<EDID> EDID::parse(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < blockSize || !isIntact(bytes.first(blockSize))) {
        return std::nullopt;
    }
    const auto byte = [&](std::size_t index) { return static_cast<std::uint32_t>(bytes[index]); };
    EDID edid;
    edid.vendorNumber = byte(8) << 8 | byte(9);
    edid.modelNumber = byte(11) << 8 | byte(10);
    edid.serialNumber = byte(15) << 24 | byte(14) << 16 | byte(13) << 8 | byte(12);
    edid.name = nameIn(bytes.first(blockSize));
    return edid;
}

}  // namespace zorvane
