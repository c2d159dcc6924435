#include "Zorvane/Internal/ShortID.hpp"

#include <array>
#include <string_view>

#include "Zorvane/Platform/Foundation/RandomBytes.hpp"

namespace zorvane {
namespace {

constexpr std::size_t length = 5;
constexpr std::string_view alphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
// Larger bytes would favour the first characters of the alphabet.
constexpr std::size_t evenlyDrawn = 256 / alphabet.size() * alphabet.size();

}  // namespace

std::string ShortID::make() {
    std::string id;
    std::array<unsigned char, 8> bytes;
    while (id.size() < length) {
        fillWithRandomBytes(bytes);
        for (std::size_t index = 0; index < bytes.size() && id.size() < length; ++index) {
            if (bytes[index] < evenlyDrawn) {
                id += alphabet[bytes[index] % alphabet.size()];
            }
        }
    }
    return id;
}

}  // namespace zorvane
