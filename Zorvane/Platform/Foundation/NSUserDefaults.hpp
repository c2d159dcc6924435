// What an application remembers of its user's choices from one run to the next.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace zorvane {

/// A remembered value: a list of one element type. An empty list is of the first one.
using NSUserDefaultsArray = std::variant<std::vector<std::string>, std::vector<std::uint32_t>>;

/// Values by key, shared by all processes of the user. Any thread may call; a call may read and write files.
class NSUserDefaults {
  public:
    /// Gets the value under a key, nothing if there is none, and returns the one to keep. Must not throw.
    using Change = std::function<NSUserDefaultsArray(std::optional<NSUserDefaultsArray> value)>;

    virtual ~NSUserDefaults() = default;

    /// The value under a key; nothing if there is none, if it is no list of one of the element types, or if the store
    /// can't be read.
    virtual std::optional<NSUserDefaultsArray> array(std::string_view key) = 0;

    /// Replaces the value under a key. Changes made by several threads and processes happen one after the other, so
    /// that none gets lost; all other keys stay as they are. Throws an `NSError` if the new value can't be kept; the
    /// store is then as it was.
    virtual void update(std::string_view key, const Change& change) = 0;
};

}  // namespace zorvane
