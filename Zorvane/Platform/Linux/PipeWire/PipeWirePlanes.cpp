#include "Zorvane/Platform/Linux/PipeWire/PipeWirePlanes.hpp"

#include <algorithm>
#include <array>

#include "Zorvane/Platform/AVFoundation/AVVideoPlaneShape.hpp"

namespace zorvane {
namespace {

using Shapes = std::array<AVVideoPlaneShape, 3>;

std::size_t countOf(const Shapes& shapes) {
    return static_cast<std::size_t>(std::ranges::count_if(shapes, &AVVideoPlaneShape::rows));
}

/// What the producer has filled, if that is inside the memory.
std::span<const std::byte> filledPart(const PipeWirePiece& piece) {
    const std::size_t memorySize = piece.memory.size();
    const std::size_t offset = memorySize > 0 ? piece.offset % memorySize : 0;
    return piece.size <= memorySize - offset ? piece.memory.subspan(offset, piece.size) : std::span<const std::byte>();
}

std::optional<std::size_t> strideOf(const PipeWirePiece& piece, const AVVideoPlaneShape& shape) {
    if (piece.bytesPerRow == 0) {
        return shape.rowBytes;
    }
    const auto stride = static_cast<std::size_t>(piece.bytesPerRow);
    return piece.bytesPerRow > 0 && stride >= shape.rowBytes ? std::optional(stride) : std::nullopt;
}

std::optional<AVVideoSourcePicture> inPiecesOfTheirOwn(const PipeWirePieces& pieces, const Shapes& shapes) {
    AVVideoSourcePicture picture;
    for (std::size_t plane = 0; plane < countOf(shapes); ++plane) {
        const auto stride = strideOf(pieces[plane], shapes[plane]);
        const auto bytes = filledPart(pieces[plane]);
        if (!stride || !shapes[plane].isHeldBy(bytes.size(), *stride)) {
            return std::nullopt;
        }
        picture.planes[plane] = bytes;
        picture.bytesPerRow[plane] = *stride;
    }
    return picture;
}

std::optional<AVVideoSourcePicture> inOnePiece(const PipeWirePiece& piece, const Shapes& shapes) {
    const auto firstStride = strideOf(piece, shapes[0]);
    const std::size_t rowDivisor = countOf(shapes) == 3 ? 2 : 1;  // of the later planes' rows against the first one's
    auto rest = filledPart(piece);
    AVVideoSourcePicture picture;
    for (std::size_t plane = 0; firstStride && plane < countOf(shapes); ++plane) {
        const AVVideoPlaneShape& needed = shapes[plane];
        const std::size_t stride = plane == 0 ? *firstStride : (*firstStride + rowDivisor - 1) / rowDivisor;
        if (!needed.isHeldBy(rest.size(), stride)) {
            return std::nullopt;
        }
        const std::size_t length = std::min(stride * needed.rows, rest.size());
        picture.planes[plane] = rest.first(length);
        picture.bytesPerRow[plane] = stride;
        rest = rest.subspan(length);
    }
    return firstStride ? std::optional(picture) : std::nullopt;
}

}  // namespace

std::optional<AVVideoSourcePicture> pictureIn(const PipeWirePieces& pieces, std::size_t count,
                                              AVVideoSourceFormat format, CMVideoDimensions size) {
    if (count == 0 || count > pieces.size() || size.width <= 0 || size.height <= 0) {
        return std::nullopt;
    }
    if (format == AVVideoSourceFormat::jpeg) {
        const auto file = filledPart(pieces[0]);
        return file.empty() ? std::nullopt : std::optional(AVVideoSourcePicture{.planes = {file}});
    }
    const Shapes shapes = planeShapes(format, size);
    return count >= countOf(shapes) ? inPiecesOfTheirOwn(pieces, shapes) : inOnePiece(pieces[0], shapes);
}

}  // namespace zorvane
