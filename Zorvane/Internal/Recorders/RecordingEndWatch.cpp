#include "Zorvane/Internal/Recorders/RecordingEndWatch.hpp"

#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

constexpr double endTimeout = 0.25;  // seconds

}  // namespace

Task<bool> RecordingEndWatch::wait() const {
    const auto late = std::make_exception_ptr(ZVError::internalError("The source hasn't come to the recording's end."));
    const ZVOutcome<double> end = co_await reached_.waitForItem(endTimeout, late).outcome();
    co_return end.isSuccess();
}

}  // namespace zorvane
