// How the cases of an enumeration stand in JSON: each has a name, told once for both directions.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "Zorvane/Internal/JSONReader.hpp"

namespace zorvane {

/// Specialised for an enumeration whose cases count up from 0: `names` has their names in that order.
template <class Enum>
struct RawValues;

template <class Enum>
concept RawRepresentable = requires {
    RawValues<Enum>::names;
};

template <RawRepresentable Enum>
constexpr std::string_view rawValueOf(Enum value) {
    return RawValues<Enum>::names.at(static_cast<std::size_t>(value));
}

/// Throws as `JSONReader` does, also for a name that no case has.
template <RawRepresentable Enum>
Enum readRawValue(const JSONReader& reader) {
    constexpr auto& names = RawValues<Enum>::names;
    const std::string name = reader.string();
    const auto found = std::ranges::find(names, name);
    if (found == names.end()) {
        reader.failUnknownValue();
    }
    return static_cast<Enum>(found - names.begin());
}

}  // namespace zorvane
