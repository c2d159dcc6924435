#include "Zorvane/Platform/Linux/X11/FramePacer.hpp"

namespace zorvane {

void FramePacer::noteChange(Time now) {
    if (!changedAt_) {
        changedAt_ = now;
    }
}

void FramePacer::noteRead(Time now, bool hasPicture) {
    // A change that had to wait was read on the grid, a little late; the next moment on the grid is counted from where
    // this one should have been. Any other read begins a grid of its own.
    const bool onGrid = changedAt_ && *changedAt_ < earliest_ && now < earliest_ + interval_ / 2;
    earliest_ = (onGrid ? earliest_ : now) + interval_;
    changedAt_.reset();
    if (hasPicture) {
        stillAt_ = now + stillAfter_;
    }
}

FramePacer::Decision FramePacer::decide(Time now) const {
    if (changedAt_) {
        return now >= earliest_ ? Decision{Step::read, {}} : Decision{Step::rest, earliest_};
    }
    if (stillAt_ && now >= *stillAt_) {
        return {Step::tellIdle, {}};
    }
    return {Step::listen, stillAt_};
}

}  // namespace zorvane
