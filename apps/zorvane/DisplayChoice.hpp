// Which display of the desktop to record.
#pragma once

#include <cstdint>
#include <stop_token>

#include "OptionValues.hpp"

namespace zorvane::cli {

/// The id, by which a schema names it, of the display that the user asked for, also if it is known but not available;
/// of the main available one if none was. Throws a `std::exception`, with a text for the user that lists the known
/// displays, if there is no such one. A desktop may be slow to answer, or hang: gives up when stop is requested.
std::uint32_t chooseDisplay(const DisplayName& wanted, std::stop_token stopToken);

}  // namespace zorvane::cli
