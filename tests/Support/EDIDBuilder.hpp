// Makes EDID blocks.
#pragma once

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

namespace zorvane {

/// A base block of a Dell panel, with the given fields.
inline std::vector<std::uint8_t> makeEDID(std::uint32_t serialNumber, const std::string& name) {
    std::vector<std::uint8_t> block(128);
    std::fill(block.begin() + 1, block.begin() + 7, std::uint8_t{0xFF});
    block[8] = 0x10;  // "DEL"
    block[9] = 0xAC;
    block[10] = 0x34;  // model 0x1234
    block[11] = 0x12;
    for (std::size_t byte = 0; byte < 4; ++byte) {
        block[12 + byte] = static_cast<std::uint8_t>(serialNumber >> 8 * byte);
    }
    const std::string text = name.empty() ? "" : (name + "\n" + std::string(13, ' ')).substr(0, 13);
    block[72 + 3] = name.empty() ? 0x10 : 0xFC;  // the second descriptor
    std::copy(text.begin(), text.end(), block.begin() + 72 + 5);
    const auto sum = std::accumulate(block.begin(), block.end() - 1, 0U);
    block[127] = static_cast<std::uint8_t>(256 - sum % 256);
    return block;
}

}  // namespace zorvane
