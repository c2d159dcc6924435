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
consteval std::string_view unqualifiedTypeName() {
    const std::string_view text = type_name::signature<Type>().substr(type_name::prefixLength);
    std::size_t begin = 0;
    std::size_t end = 0;
    for (int depth = 0; depth > 0 || (text[end] != ';' && text[end] != ']'); ++end) {
        depth += text[end] == '<' ? 1 : text[end] == '>' ? -1 : 0;
        if (depth == 0 && text[end] == ':') {
            begin = end + 1;
        }
    }
    const std::string_view name = text.substr(begin, end - begin);
    return name.substr(0, name.find('<'));
}

}  // namespace zorvane
