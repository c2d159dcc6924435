// Reads what a monitor says of itself.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace zorvane {

/// What of an EDID block identifies the panel.
struct EDID {
    std::uint32_t vendorNumber = 0;  ///< the maker's three letters, as the two bytes of the block read as one number
    std::uint32_t modelNumber = 0;
    std::uint32_t serialNumber = 0;   ///< 0 or a filler on many panels
    std::optional<std::string> name;  ///< the monitor's name for people

    /// Nothing if `bytes` don't begin with an intact base block.
    static std::optional<EDID> parse(std::span<const std::uint8_t> bytes);
};

}  // namespace zorvane
