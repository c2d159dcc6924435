// Errors of the window server, as thrown values.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "Zorvane/ZVError.hpp"

namespace zorvane {

enum class CGError : std::int32_t {
    success = 0,
    failure = 1000,
    illegalArgument = 1001,
    invalidConnection = 1002,
    invalidContext = 1003,
    cannotComplete = 1004,
    notImplemented = 1006,
    rangeCheck = 1007,
    typeCheck = 1008,
    invalidOperation = 1010,
    noneAvailable = 1011,
};

/// A window server's error. Its debug description is the name of the case, "@unknown default" for a code without one.
class CGErrorDescription final : public ZVDescribedError {
  public:
    /// `detail` says for people what could not be done and how to mend it.
    CGErrorDescription(CGError error, const std::string& detail);

    CGError error() const { return error_; }

  private:
    CGError error_;
};

}  // namespace zorvane
