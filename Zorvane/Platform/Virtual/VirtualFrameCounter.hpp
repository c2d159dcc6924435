// A number in the corner of a picture, readable also after a lossy encoder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "Zorvane/Platform/CoreMedia/CVPixelBuffer.hpp"

namespace zorvane {

/// One black or white square of a counter, in pixels from the picture's top left corner.
struct VirtualCounterCell {
    static constexpr std::int32_t size = 8;  ///< a macroblock holds four cells, so that encoding blurs no cell away

    std::int32_t x = 0;
    std::int32_t y = 0;
    bool isWhite = false;
};

/// Calls `draw` for each cell of the counter that shows `number`: 256 by 16 pixels in all.
void forEachCounterCell(std::uint32_t number, const std::function<void(const VirtualCounterCell& cell)>& draw);

/// The number in the top left corner of a picture that was not scaled; nothing when the cells there are no counter.
std::optional<std::uint32_t> readFrameCounter(const std::byte* pixels, const CVPixelLayout& layout);

}  // namespace zorvane
