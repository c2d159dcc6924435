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

    std::size_t end() const { return offset + size; }
    std::size_t contentOffset() const { return offset + headerSize; }
};

/// Room for the header of a box of any size.
using ReservedSpace = std::array<std::byte, 16>;

/// The first box of that type among the outermost boxes, or nothing.
std::optional<MovieBox> findBox(std::span<const std::byte> boxes, std::string_view type);

/// Where a fragment's media of the track with this identifier begins, in bytes from the fragment's own begin, or
/// nothing if it has none. `fragment` is the box `moof`.
std::optional<std::size_t> findTrackMedia(std::span<const std::byte> fragment, std::uint32_t track);

/// A box that readers skip.
ReservedSpace reservedBox();

/// The header of a box of media data, of which the content and this space together are `size` bytes. Some readers know
/// no sizes of 64 bits, so a box that can do without has a small header, behind an empty box that fills the space.
ReservedSpace mediaDataHeader(std::uint64_t size);

}  // namespace zorvane
