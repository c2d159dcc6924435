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

std::span<const std::byte> contentOf(std::span<const std::byte> boxes, const MovieBox& box) {
    return boxes.subspan(box.contentOffset(), box.size - MovieBox::headerSize);
}

/// The 32-bit field at `offset` in the content of the first box of that type, or nothing.
std::optional<std::uint32_t> findField(std::span<const std::byte> boxes, std::string_view type, std::size_t offset) {
    const std::optional<MovieBox> box = findBox(boxes, type);
    if (!box || box->size < MovieBox::headerSize + offset + 4) {
        return std::nullopt;
    }
    return bigEndian32(contentOf(boxes, *box).subspan(offset));
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

std::optional<std::size_t> findTrackMedia(std::span<const std::byte> fragment, std::uint32_t track) {
    constexpr std::size_t trackField = 4;   // behind version and flags
    constexpr std::size_t offsetField = 8;  // behind these and the number of samples
    std::span<const std::byte> boxes = fragment.subspan(MovieBox::headerSize);
    while (const std::optional<MovieBox> ofTrack = findBox(boxes, "traf")) {
        const std::span<const std::byte> content = contentOf(boxes, *ofTrack);
        if (findField(content, "tfhd", trackField) == track) {
            return findField(content, "trun", offsetField);
        }
        boxes = boxes.subspan(ofTrack->end());
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
