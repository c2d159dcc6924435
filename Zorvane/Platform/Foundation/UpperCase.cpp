#include "Zorvane/Platform/Foundation/UpperCase.hpp"

#include <unicase.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>

namespace zorvane {

std::string uppercased(std::string_view text) {
    std::array<std::uint8_t, 64> room;  // for what a key types; a longer result is allocated
    std::size_t length = room.size();
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    std::uint8_t* result = u8_toupper(bytes, text.size(), nullptr, nullptr, room.data(), &length);
    if (!result) {
        throw std::bad_alloc();
    }
    const std::unique_ptr<std::uint8_t, decltype(&std::free)> allocated(result == room.data() ? nullptr : result,
                                                                        &std::free);
    return {reinterpret_cast<const char*>(result), length};
}

}  // namespace zorvane
