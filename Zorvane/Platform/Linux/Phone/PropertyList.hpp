// What phones and their service say of themselves: dictionaries of the plist library.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace zorvane {

struct FreePropertyList {
    void operator()(void* node) const;
};

/// Owns a `plist_t`.
using PropertyList = std::unique_ptr<void, FreePropertyList>;

/// Reads the XML or the binary form; null if it is neither.
PropertyList parsePropertyList(const char* bytes, std::uint32_t size);

/// The text under a key of a dictionary; nothing if there is none, or no dictionary.
std::optional<std::string> textOf(const PropertyList& dictionary, const char* key);

}  // namespace zorvane
