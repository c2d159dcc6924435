#include "Zorvane/Internal/RecordingIntervalBoundedRetimerError.hpp"

#include <fmt/format.h>

namespace zorvane {
namespace {

using Error = RecordingIntervalBoundedRetimerError;

struct Describe {
    std::string operator()(const Error::WrongOrder& order) const {
        return fmt::format("wrongOrder(previous: {}, current: {})", order.previous.logDescription(),
                           order.current.logDescription());
    }
    std::string operator()(const Error::TimescaleExceedsSession& session) const {
        return fmt::format("timescaleExceedsSession(timescale: {}, intervalDuration: {})", session.timescale,
                           session.intervalDuration);
    }
    std::string operator()(const Error::InternalError& order) const {
        return fmt::format("internalError(previous: {}, current: {})", order.previous.logDescription(),
                           order.current.logDescription());
    }
    std::string operator()(const Error::HandlerNotSet&) const { return "handlerNotSet"; }
    std::string operator()(const Error::FinishedWithoutFrames&) const { return "finishedWithoutFrames"; }
};

}  // namespace

RecordingIntervalBoundedRetimerError::RecordingIntervalBoundedRetimerError(const Case& which)
    : which_(which), text_(std::visit(Describe(), which)) {}

}  // namespace zorvane
