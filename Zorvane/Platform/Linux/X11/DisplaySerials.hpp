// Numbers by which displays are known again.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zorvane {

/// What identifies a display: the connector it hangs on, and its EDID block (empty when it has none).
struct DisplayIdentity {
    std::string connector;
    std::vector<std::uint8_t> edid;
};

/// One number per display, never 0 and all different: the panel's own serial number where it has one that no other
/// display shares, else a number derived from EDID and connector. The same displays give the same numbers, in
/// whatever order they are listed. Pure.
std::vector<std::uint32_t> displaySerialNumbers(const std::vector<DisplayIdentity>& displays);

}  // namespace zorvane
