#include "Zorvane/Platform/FFmpeg/MovieBoxes.hpp"

#include <cstring>

namespace zorvane {
namespace {

void putBigEndian(std::uint64_t value, std::span<std::byte> bytes) {
    for (std::size_t index = bytes.size(); index > 0; --index) {
        bytes[index - 1] = static_cast<std::byte>(value & 0xff);
        value >>= 8U;
    }
}

std::uint32_t bigEndian32(std::span<const std::byte> bytes) {
    std::uint32_t value = 0;
    for (const std::byte byte : bytes.first<4>()) {
        value = value << 8U | std::to_integer<std::uint32_t>(byte);
    }
    return value;
}

LargeBoxHeader header(std::uint32_t size, std::string_view type) {
    LargeBoxHeader header{};
    putBigEndian(size, std::span(header).first<4>());
    std::memcpy(header.data() + 4, type.data(), 4);
    return header;
}

}  // namespace

std::optional<MovieBox> findBox(std::span<const std::byte> boxes, std::string_view type) {
    std::size_t offset = 0;
    while (boxes.size() - offset >= MovieBox::headerSize) {
        const std::span<const std::byte> rest = boxes.subspan(offset);
        const std::size_t size = bigEndian32(rest);
        if (size < MovieBox::headerSize || size > rest.size()) {
            return std::nullopt;
        }
        if (std::memcmp(rest.data() + 4, type.data(), 4) == 0) {
            return MovieBox{offset, size};
        }
        offset += size;
    }
    return std::nullopt;
}

LargeBoxHeader reservedBox() {
    return header(MovieBox::largeHeaderSize, "free");
}

LargeBoxHeader mediaDataHeader(std::uint64_t size) {
    LargeBoxHeader result = header(1, "mdat");  // 1 says that the size follows the type
    putBigEndian(size, std::span(result).last<8>());
    return result;
}

}  // namespace zorvane
