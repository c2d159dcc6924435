#include "Zorvane/Platform/Linux/PipeWire/PipeWirePlanes.hpp"

#include <algorithm>

namespace zorvane {
namespace {

/// What a plane needs at least.
struct PlaneShape {
    std::size_t rowBytes = 0;
    std::size_t rows = 0;
};

struct PictureShape {
    std::array<PlaneShape, 3> planes;
    std::size_t count = 1;
    std::size_t rowDivisor = 1;  // of the later planes' rows against the first one's
};

PictureShape shapeOf(AVVideoSourceFormat format, CMVideoDimensions size) {
    using enum AVVideoSourceFormat;
    const auto width = static_cast<std::size_t>(size.width);
    const auto height = static_cast<std::size_t>(size.height);
    const std::size_t pairs = (width + 1) / 2;
    const std::size_t halfHeight = (height + 1) / 2;
    const auto packed = [&](std::size_t rowBytes) { return PictureShape{.planes = {{{rowBytes, height}}}}; };
    switch (format) {
        case yuyv:
        case uyvy:
        case yvyu:
            return packed(pairs * 4);
        case nv12:
        case nv21:
            return {.planes = {{{width, height}, {pairs * 2, halfHeight}}}, .count = 2};
        case i420:
        case yv12:
            return {
                .planes = {{{width, height}, {pairs, halfHeight}, {pairs, halfHeight}}}, .count = 3, .rowDivisor = 2};
        case gray8:
            return packed(width);
        case rgb:
        case bgr:
            return packed(width * 3);
        case rgbx:
        case bgrx:
        case xrgb:
        case xbgr:
            return packed(width * 4);
        case jpeg:
            break;
    }
    return {};
}

/// What the producer has filled, if that is inside the memory.
std::span<const std::byte> filledPart(const PipeWirePiece& piece) {
    const std::size_t memorySize = piece.memory.size();
    const std::size_t offset = memorySize > 0 ? piece.offset % memorySize : 0;
    return piece.size <= memorySize - offset ? piece.memory.subspan(offset, piece.size) : std::span<const std::byte>();
}

std::optional<std::size_t> strideOf(const PipeWirePiece& piece, const PlaneShape& shape) {
    if (piece.bytesPerRow == 0) {
        return shape.rowBytes;
    }
    const auto stride = static_cast<std::size_t>(piece.bytesPerRow);
    return piece.bytesPerRow > 0 && stride >= shape.rowBytes ? std::optional(stride) : std::nullopt;
}

/// Its last row may end where its pixels end.
bool fits(std::span<const std::byte> bytes, const PlaneShape& shape, std::size_t stride) {
    return bytes.size() >= stride * (shape.rows - 1) + shape.rowBytes;
}

std::optional<AVVideoSourcePicture> inPiecesOfTheirOwn(const PipeWirePieces& pieces, const PictureShape& shape) {
    AVVideoSourcePicture picture;
    for (std::size_t plane = 0; plane < shape.count; ++plane) {
        const auto stride = strideOf(pieces[plane], shape.planes[plane]);
        const auto bytes = filledPart(pieces[plane]);
        if (!stride || !fits(bytes, shape.planes[plane], *stride)) {
            return std::nullopt;
        }
        picture.planes[plane] = bytes;
        picture.bytesPerRow[plane] = *stride;
    }
    return picture;
}

std::optional<AVVideoSourcePicture> inOnePiece(const PipeWirePiece& piece, const PictureShape& shape) {
    const auto firstStride = strideOf(piece, shape.planes[0]);
    auto rest = filledPart(piece);
    AVVideoSourcePicture picture;
    for (std::size_t plane = 0; firstStride && plane < shape.count; ++plane) {
        const PlaneShape& needed = shape.planes[plane];
        const std::size_t stride = plane == 0 ? *firstStride : (*firstStride + shape.rowDivisor - 1) / shape.rowDivisor;
        if (stride < needed.rowBytes || !fits(rest, needed, stride)) {
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
    const PictureShape shape = shapeOf(format, size);
    return count >= shape.count ? inPiecesOfTheirOwn(pieces, shape) : inOnePiece(pieces[0], shape);
}

}  // namespace zorvane
