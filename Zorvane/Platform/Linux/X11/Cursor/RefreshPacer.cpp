#include "Zorvane/Platform/Linux/X11/Cursor/RefreshPacer.hpp"

namespace zorvane {

void RefreshPacer::noteChange(Time now) {
    isCallOwed_ = true;
    lastChange_ = now;
}

RefreshPacer::Next RefreshPacer::next(Time now) const {
    const bool isLingering = lastChange_ && now - *lastChange_ < linger;
    if (!isCallOwed_ && !isLingering) {
        return {};
    }
    if (nextRefresh_ && now < *nextRefresh_) {
        return {Step::pause, nextRefresh_};
    }
    return {Step::call, std::nullopt};
}

/// A call that comes late doesn't shift those behind it, unless it is late by a whole refresh.
void RefreshPacer::noteCall(Time now, Time interval) {
    isCallOwed_ = false;
    const Time refresh = nextRefresh_ && now - *nextRefresh_ < interval ? *nextRefresh_ : now;
    nextRefresh_ = refresh + interval;
}

}  // namespace zorvane
