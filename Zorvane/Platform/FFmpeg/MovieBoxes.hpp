// The few boxes of a movie that are read and written without a muxer.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace zorvane {

/// A box inside some bytes.
struct MovieBox {
    std::size_t offset = 0;
    std::size_t size = 0;  ///< with its header

    static constexpr std::size_t headerSize = 8;
    /// Enough for a box of any size.
    static constexpr std::size_t largeHeaderSize = 16;

    std::size_t end() const { return offset + size; }
    std::size_t contentOffset() const { return offset + headerSize; }
};

using LargeBoxHeader = std::array<std::byte, MovieBox::largeHeaderSize>;

/// The first box of that type among the outermost boxes, or nothing.
std::optional<MovieBox> findBox(std::span<const std::byte> boxes, std::string_view type);

/// Where a fragment's media of the track with this identifier begins, in bytes from the fragment's own begin, or
/// nothing if it has none. `fragment` is the box `moof`.
std::optional<std::size_t> findTrackMedia(std::span<const std::byte> fragment, std::uint32_t track);

/// A box of 16 bytes that readers skip.
LargeBoxHeader reservedBox();

/// The header of a box of media data that spans `size` bytes, this header included.
LargeBoxHeader mediaDataHeader(std::uint64_t size);

}  // namespace zorvane
