// What a retimer throws.
#pragma once

#include <exception>
#include <string>
#include <variant>

#include "Zorvane/Platform/CoreMedia/CMTime.hpp"

namespace zorvane {

class RecordingIntervalBoundedRetimerError : public std::exception {
  public:
    /// An item's time isn't later than that of the item before it, or is no number.
    struct WrongOrder {
        CMTime previous;
        CMTime current;
    };

    /// The recording isn't longer than one tick of the item's timescale, so that its end falls on its start. Both are
    /// seconds: the tick, and the recording's length.
    struct TimescaleExceedsSession {
        double timescale;
        double intervalDuration;
    };

    /// An output time isn't later than the one before it.
    struct InternalError {
        CMTime previous;
        CMTime current;
    };

    /// An item is ready and there is no handler to take it.
    struct HandlerNotSet {};

    /// `finish` was called, and no item had ever come.
    struct FinishedWithoutFrames {};

    using Case = std::variant<WrongOrder, TimescaleExceedsSession, InternalError, HandlerNotSet, FinishedWithoutFrames>;

    RecordingIntervalBoundedRetimerError(const Case& which);  // NOLINT: a case is an error

    const Case& which() const { return which_; }

    /// The case and its values, for logs.
    const char* what() const noexcept override { return text_.c_str(); }

  private:
    Case which_;
    std::string text_;
};

}  // namespace zorvane
