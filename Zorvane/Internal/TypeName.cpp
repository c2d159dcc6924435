#include "Zorvane/Internal/TypeName.hpp"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace zorvane {

std::string qualifiedTypeName(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                           &std::free);
    return name ? name.get() : type.name();
}

std::string unqualifiedTypeName(const std::type_info& type) {
    return std::string(type_name::unqualified(qualifiedTypeName(type)));
}

}  // namespace zorvane
