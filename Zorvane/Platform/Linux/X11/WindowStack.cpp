#include "Zorvane/Platform/Linux/X11/WindowStack.hpp"

#include <algorithm>

namespace zorvane {

WindowStack::Windows::const_iterator WindowStack::position(std::uint32_t id) const {
    return std::find_if(windows_.begin(), windows_.end(), [id](const auto& each) { return each->id == id; });
}

StackedWindow* WindowStack::find(std::uint32_t id) const {
    const auto found = position(id);
    return found == windows_.end() ? nullptr : found->get();
}

StackedWindow& WindowStack::add(std::uint32_t id) {
    remove(id);
    windows_.push_back(std::make_unique<StackedWindow>());
    windows_.back()->id = id;
    return *windows_.back();
}

void WindowStack::remove(std::uint32_t id) {
    std::erase_if(windows_, [id](const auto& each) { return each->id == id; });
}

bool WindowStack::placeAbove(std::uint32_t id, std::uint32_t sibling) {
    const auto from = position(id) - windows_.cbegin();
    const auto below = position(sibling) - windows_.cbegin();
    const auto end = static_cast<std::ptrdiff_t>(windows_.size());
    if (from == end || id == sibling) {
        return false;
    }
    const auto begin = windows_.begin();
    const auto to = below == end ? 0 : below < from ? below + 1 : below;
    if (to < from) {
        std::rotate(begin + to, begin + from, begin + from + 1);
    } else {
        std::rotate(begin + from, begin + from + 1, begin + to + 1);
    }
    return to != from;
}

bool WindowStack::raise(std::uint32_t id) {
    return !windows_.empty() && placeAbove(id, windows_.back()->id);
}

void WindowStack::veil(StackedWindow& window, Others others) const {
    if (!window.isVisible()) {
        return;
    }
    for (auto other = windows_.rbegin(); other != windows_.rend(); ++other) {
        if (other->get() == &window && others == Others::inFront) {
            return;
        }
        if ((*other)->isMapped && !(*other)->isVisible()) {
            const PixelRect inside = window.inside();
            window.veil.lay(intersection((*other)->bounds, inside).movedBy(-inside.x, -inside.y));
        }
    }
}

bool WindowStack::isOutOfSight(const StackedWindow& window, const PixelRect& rect) const {
    for (auto above = windows_.rbegin(); above->get() != &window; ++above) {
        if ((*above)->isOpaque() && (*above)->bounds.contains(rect)) {
            return true;
        }
    }
    return false;
}

}  // namespace zorvane
