#include "Zorvane/Platform/Linux/X11/Input/DeliveryPacer.hpp"

#include <utility>

namespace zorvane {

DeliveryPacer::Step DeliveryPacer::next(bool isHeard, std::chrono::nanoseconds now) {
    if (isHeard) {
        lastHeard_ = now;
    }
    if (!isAsking_ && !isHeard) {
        return Step::none;
    }
    if (isAsking_ && now < nextAsk_) {
        return Step::none;
    }
    if (isAsking_ && now - lastHeard_ >= linger) {
        isAsking_ = false;
        return Step::rest;
    }
    nextAsk_ = now + interval;
    return std::exchange(isAsking_, true) ? Step::ask : Step::beginAsking;
}

std::optional<std::chrono::nanoseconds> DeliveryPacer::deadline() const {
    return isAsking_ ? std::optional(nextAsk_) : std::nullopt;
}

}  // namespace zorvane
