#include "Zorvane/Platform/FFmpeg/MovieBoxes.hpp"

#include <cstring>
#include <limits>

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

void putHeader(std::uint32_t size, std::string_view type, std::span<std::byte> bytes) {
    putBigEndian(size, bytes.first<4>());
    std::memcpy(bytes.data() + 4, type.data(), 4);
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

ReservedSpace reservedBox() {
    ReservedSpace space{};
    putHeader(space.size(), "free", space);
    return space;
}

ReservedSpace mediaDataHeader(std::uint64_t size) {
    ReservedSpace space{};
    const std::uint64_t smallSize = size - MovieBox::headerSize;
    if (smallSize <= std::numeric_limits<std::uint32_t>::max()) {
        putHeader(MovieBox::headerSize, "free", space);
        putHeader(static_cast<std::uint32_t>(smallSize), "mdat", std::span(space).last<MovieBox::headerSize>());
    } else {
        putHeader(1, "mdat", space);  // 1 says that the size follows the type
        putBigEndian(size, std::span(space).last<8>());
    }
    return space;
}

}  // namespace zorvane
