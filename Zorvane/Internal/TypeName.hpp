// The name of a type as its source spells it, at compile time.
#pragma once

#include <string_view>

namespace zorvane {
namespace type_name {

template <typename Type>
constexpr std::string_view signature() {
    return __PRETTY_FUNCTION__;
}

/// What the compiler writes around the name, measured on a type whose name is known.
inline constexpr std::size_t prefixLength = signature<int>().find("Type = int") + std::string_view("Type = ").size();

}  // namespace type_name

/// Without namespaces, enclosing classes and template arguments: "Coordinator" for `zorvane::Recorder::Coordinator`.
template <typename Type>
constexpr std::string_view unqualifiedTypeName() {
    std::string_view name = type_name::signature<Type>().substr(type_name::prefixLength);
    name = name.substr(0, name.find_first_of("<;]"));
    const std::size_t qualifier = name.rfind("::");
    return qualifier == std::string_view::npos ? name : name.substr(qualifier + 2);
}

}  // namespace zorvane
