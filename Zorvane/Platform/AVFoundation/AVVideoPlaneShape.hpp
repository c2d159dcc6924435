// How much memory the pictures of devices take.
#pragma once

#include <array>
#include <cstddef>

#include "Zorvane/Platform/AVFoundation/AVVideoConverter.hpp"

namespace zorvane {

/// What a plane of a picture needs at least.
struct AVVideoPlaneShape {
    std::size_t rowBytes = 0;
    std::size_t rows = 0;

    /// Whether `byteCount` bytes hold it with rows so far apart. Its last row may end where its pixels end. Rows of
    /// 2 GiB and more, which may be claimed but aren't there, are never held.
    bool isHeldBy(std::size_t byteCount, std::size_t bytesPerRow) const;
};

/// Of as many planes as the format has, the others being empty. A JPEG has none.
std::array<AVVideoPlaneShape, 3> planeShapes(AVVideoSourceFormat format, CMVideoDimensions size);

}  // namespace zorvane
