// The planes of a '420v' picture as the libraries of pictures take them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"

namespace zorvane {

/// Memory of a picture that is being made. Rows of chroma are `2 * chromaWidth` bytes long.
struct BiPlanarPicture {
    explicit BiPlanarPicture(CVPixelBuffer& picture)
        : luma(reinterpret_cast<std::uint8_t*>(picture.mutableBytes())),
          chroma(luma + picture.layout().chromaOffset()),
          bytesPerRow(static_cast<int>(picture.layout().bytesPerRow)),
          width(picture.layout().width),
          height(picture.layout().height),
          chromaWidth((width + 1) / 2),
          chromaHeight((height + 1) / 2) {}

    std::uint8_t* lumaRow(std::int32_t y) const { return luma + std::ptrdiff_t{bytesPerRow} * y; }
    std::uint8_t* chromaRow(std::int32_t y) const { return chroma + std::ptrdiff_t{bytesPerRow} * y; }

    std::uint8_t* const luma;
    std::uint8_t* const chroma;
    const int bytesPerRow;
    const std::int32_t width;
    const std::int32_t height;
    const std::int32_t chromaWidth;
    const std::int32_t chromaHeight;
};

}  // namespace zorvane
