// What the machine's model tells.
#pragma once

#include <optional>
#include <string>

namespace zorvane::MacModelSpecs {

/// The maker's identifier of this machine, such as "MacBookPro16,1"; nothing when the system doesn't tell. Any thread.
std::optional<std::string> getModelIdentifier();

/// Whether this is a MacBook whose lid, once closed, switches off its own camera and microphone. Any thread.
bool isT2MacBook();

/// Whether this machine has a lid: a MacBook by its identifier, or what the system calls a laptop. Any thread.
bool isLaptop();

}  // namespace zorvane::MacModelSpecs
