// The one message that a recorder sends upward on its own.
#pragma once

#include <exception>
#include <functional>
#include <string>
#include <utility>

#include "Zorvane/ZVError.hpp"

namespace zorvane {

/// Why a recorder ends the recording.
class AbortSignal {
  public:
    /// The recorder can no longer record. `error` is not null.
    static AbortSignal interrupted(std::exception_ptr error) { return AbortSignal(std::move(error)); }
    /// The user ended the capture from outside the program.
    static AbortSignal userStopped() { return AbortSignal(nullptr); }

    /// Null if the user stopped.
    const std::exception_ptr& error() const { return error_; }

    /// "userStopped", or "interrupted: " and the error's description.
    std::string debugDescription() const {
        return error_ ? "interrupted: " + zorvane::debugDescription(error_) : "userStopped";
    }

  private:
    explicit AbortSignal(std::exception_ptr error) : error_(std::move(error)) {}

    std::exception_ptr error_;
};

/// Where a recorder sends its signal. May be called on any thread, any number of times, also after the recording has
/// ended; it returns at once. The first signal that reaches a running recording decides.
using AbortHandler = std::function<void(AbortSignal signal)>;

}  // namespace zorvane
