#include "Zorvane/Internal/FileURL.hpp"

#include <string_view>
#include <system_error>

namespace zorvane {
namespace {

/// The characters that RFC 3986 lets stand in a path, and the slash between its segments.
bool isPathCharacter(char character) {
    constexpr std::string_view marks = "-._~!$&'()*+,;=:@/";
    const bool isAlphanumeric = (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
                                (character >= '0' && character <= '9');
    return isAlphanumeric || marks.find(character) != std::string_view::npos;
}

}  // namespace

std::string absoluteURLString(const std::filesystem::path& path, Directory directory) {
    constexpr std::string_view hexDigits = "0123456789ABCDEF";
    std::string url = "file://";
    // Without a working directory the path stays what it is: a log line is no reason to fail.
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    for (const char character : (error ? path : absolute).native()) {
        if (isPathCharacter(character)) {
            url += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        url += {'%', hexDigits[byte >> 4U], hexDigits[byte & 0xFU]};
    }
    if (directory == Directory::yes && !url.ends_with('/')) {
        url += '/';
    }
    return url;
}

}  // namespace zorvane
