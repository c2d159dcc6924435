#include "Zorvane/Internal/FileURL.hpp"

#include <system_error>

namespace zorvane {
namespace {

bool isAlphanumeric(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9');
}

/// Beside letters and digits, what RFC 3986 lets stand in a path, and the slash between its segments.
constexpr std::string_view pathMarks = "-._~!$&'()*+,;=:@/";
/// The same, of what never has a meaning of its own.
constexpr std::string_view unreservedMarks = "-._~";

std::string percentEncoded(std::string_view text, std::string_view marks) {
    constexpr std::string_view hexDigits = "0123456789ABCDEF";
    std::string encoded;
    for (const char character : text) {
        if (isAlphanumeric(character) || marks.find(character) != std::string_view::npos) {
            encoded += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        encoded += {'%', hexDigits[byte >> 4U], hexDigits[byte & 0xFU]};
    }
    return encoded;
}

}  // namespace

std::string absoluteURLString(const std::filesystem::path& path, Directory directory) {
    // Without a working directory the path stays what it is: a log line is no reason to fail.
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    std::string url = "file://" + percentEncoded((error ? path : absolute).native(), pathMarks);
    if (directory == Directory::yes && !url.ends_with('/')) {
        url += '/';
    }
    return url;
}

std::string relativeURLString(std::string_view filename) {
    return percentEncoded(filename, unreservedMarks);
}

}  // namespace zorvane
