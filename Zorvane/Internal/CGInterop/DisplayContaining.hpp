// Which display a rectangle counts for.
#pragma once

#include <functional>
#include <ranges>

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"

namespace zorvane {

/// The fraction of `rect`'s area that lies inside `frame`, from 0 to 1; 0 for a rectangle without an area.
double intersectionPercentage(const CGRect& frame, const CGRect& rect);

/// The display that holds most of `rect`, the first of several that hold as much; null when none holds any of it.
/// `frameOf` gives a display's frame; `displays` are to outlive the answer.
template <std::ranges::forward_range Displays, class FrameOf>
auto displayContaining(const Displays& displays, FrameOf frameOf, const CGRect& rect) {
    const std::ranges::range_value_t<Displays>* best = nullptr;
    double bestPercentage = 0;
    for (const auto& display : displays) {
        const double percentage = intersectionPercentage(std::invoke(frameOf, display), rect);
        if (percentage > bestPercentage) {
            best = &display;
            bestPercentage = percentage;
        }
    }
    return best;
}

}  // namespace zorvane
