// The order in which people expect names.
#pragma once

#include <compare>
#include <string_view>

namespace zorvane {

/// Compares two texts without regard to the case of Latin letters, and runs of digits by their value: "Disk 2" comes
/// before "disk 10". All other characters go by their code points. Texts that differ only in case or in leading zeros
/// are equivalent.
std::weak_ordering naturalOrder(std::string_view a, std::string_view b);

}  // namespace zorvane
