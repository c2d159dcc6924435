#include "Zorvane/Internal/ShortID.hpp"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <string_view>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

constexpr std::size_t length = 5;
constexpr std::string_view alphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
// Larger bytes would favour the first characters of the alphabet.
constexpr std::size_t evenlyDrawn = 256 / alphabet.size() * alphabet.size();

void fillRandomly(std::array<unsigned char, 8>& bytes) {
    // So few bytes never come in part, but the wait for the generator's first seed can be interrupted.
    while (getrandom(bytes.data(), bytes.size(), 0) < 0) {
        if (errno != EINTR) {
            throw NSError::posix(errno, "read random bytes");
        }
    }
}

}  // namespace

std::string ShortID::make() {
    std::string id;
    std::array<unsigned char, 8> bytes;
    while (id.size() < length) {
        fillRandomly(bytes);
        for (std::size_t index = 0; index < bytes.size() && id.size() < length; ++index) {
            if (bytes[index] < evenlyDrawn) {
                id += alphabet[bytes[index] % alphabet.size()];
            }
        }
    }
    return id;
}

}  // namespace zorvane
