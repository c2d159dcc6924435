#include "Zorvane/Platform/AVFoundation/AVVideoPlaneShape.hpp"

#include <cstdint>
#include <limits>

namespace zorvane {

bool AVVideoPlaneShape::isHeldBy(std::size_t byteCount, std::size_t bytesPerRow) const {
    constexpr std::size_t longestRow = std::numeric_limits<std::int32_t>::max();
    if (rows == 0) {
        return true;
    }
    return bytesPerRow >= rowBytes && bytesPerRow <= longestRow && byteCount >= bytesPerRow * (rows - 1) + rowBytes;
}

std::array<AVVideoPlaneShape, 3> planeShapes(AVVideoSourceFormat format, CMVideoDimensions size) {
    using enum AVVideoSourceFormat;
    const auto width = static_cast<std::size_t>(size.width);
    const auto height = static_cast<std::size_t>(size.height);
    const std::size_t pairs = (width + 1) / 2;
    const std::size_t rowPairs = (height + 1) / 2;
    switch (format) {
        case yuyv:
        case uyvy:
        case yvyu:
            return {AVVideoPlaneShape{pairs * 4, height}};
        case nv12:
        case nv21:
            return {AVVideoPlaneShape{width, height}, {pairs * 2, rowPairs}};
        case i420:
        case yv12:
            return {AVVideoPlaneShape{width, height}, {pairs, rowPairs}, {pairs, rowPairs}};
        case gray8:
            return {AVVideoPlaneShape{width, height}};
        case rgb:
        case bgr:
            return {AVVideoPlaneShape{width * 3, height}};
        case rgbx:
        case bgrx:
        case xrgb:
        case xbgr:
            return {AVVideoPlaneShape{width * 4, height}};
        case jpeg:
            break;
    }
    return {};
}

}  // namespace zorvane
