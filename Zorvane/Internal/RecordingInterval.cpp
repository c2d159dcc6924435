#include "Zorvane/Internal/RecordingInterval.hpp"

#include <utility>

namespace zorvane {

void VolatileRecordingInterval::start(double at) {
    queue_.syncBarrier([this, at] { recordFrom_ = at; });
}

void VolatileRecordingInterval::stop(double at) {
    queue_.syncBarrier([this, at] { recordUntil_ = at; });
}

VolatileRecordingInterval::Interval VolatileRecordingInterval::interval() const {
    return queue_.sync([this] { return Interval{recordFrom_, recordUntil_}; });
}

StableRecordingInterval::StableRecordingInterval(
    std::shared_ptr<const VolatileRecordingInterval> volatileRecordingInterval)
    : volatileRecordingInterval_(std::move(volatileRecordingInterval)),
      interval_(volatileRecordingInterval_->interval()) {}

void StableRecordingInterval::refresh() {
    interval_ = volatileRecordingInterval_->interval();
}

}  // namespace zorvane
