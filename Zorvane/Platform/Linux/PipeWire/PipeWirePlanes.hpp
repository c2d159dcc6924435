// Where in a buffer of PipeWire's a picture stands.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "Zorvane/Platform/AVFoundation/AVVideoConverter.hpp"
#include "Zorvane/Platform/CoreMedia/CMFormatDescription.hpp"

namespace zorvane {

/// One piece of a buffer's memory, and what its producer says is in it. Nothing that it says is to be relied on.
struct PipeWirePiece {
    std::span<const std::byte> memory;  ///< all that can be read
    std::uint32_t offset = 0;
    std::uint32_t size = 0;
    std::int32_t bytesPerRow = 0;  ///< 0: the rows follow each other closely
};

/// A buffer has at most so many.
using PipeWirePieces = std::array<PipeWirePiece, 3>;

/// The picture in the first `count` pieces, whose planes stand in a piece each or all in the first one, one after the
/// other. Nothing if it isn't there whole: its rows are too short or run backwards, or it ends after what the producer
/// has filled or after the memory.
std::optional<AVVideoSourcePicture> pictureIn(const PipeWirePieces& pieces, std::size_t count,
                                              AVVideoSourceFormat format, CMVideoDimensions size);

}  // namespace zorvane
