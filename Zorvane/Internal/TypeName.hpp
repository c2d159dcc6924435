// The name of a type as its source spells it, at compile time and at run time.
#pragma once

#include <string>
#include <string_view>
#include <typeinfo>

namespace zorvane {
namespace type_name {

template <typename Type>
constexpr std::string_view signature() {
    return __PRETTY_FUNCTION__;
}

/// What the compiler writes around the name, measured on a type whose name is known.
inline constexpr std::size_t prefixLength = signature<int>().find("Type = int") + std::string_view("Type = ").size();

/// The bare name in a text that begins with a qualified one, up to a ';' or ']'.
constexpr std::string_view unqualified(std::string_view text) {
    std::size_t begin = 0;
    std::size_t end = 0;
    for (int depth = 0; end < text.size() && (depth > 0 || (text[end] != ';' && text[end] != ']')); ++end) {
        depth += text[end] == '<' ? 1 : text[end] == '>' ? -1 : 0;
        if (depth == 0 && text[end] == ':') {
            begin = end + 1;
        }
    }
    const std::string_view name = text.substr(begin, end - begin);
    return name.substr(0, name.find('<'));
}

}  // namespace type_name

/// Without namespaces, enclosing classes and template arguments: "Coordinator" for `zorvane::Recorder::Coordinator`.
template <typename Type>
consteval std::string_view unqualifiedTypeName() {
    return type_name::unqualified(type_name::signature<Type>().substr(type_name::prefixLength));
}

/// The same of a type known at run time, such as an object's dynamic type: `unqualifiedTypeName(typeid(object))`.
std::string unqualifiedTypeName(const std::type_info& type);

/// The name with all its qualifiers.
std::string qualifiedTypeName(const std::type_info& type);

}  // namespace zorvane
