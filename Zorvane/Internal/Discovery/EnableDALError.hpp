// Why the screens of phones could not be switched on.
#pragma once

#include <cstdint>
#include <string>

#include "Zorvane/ZVError.hpp"

namespace zorvane {

class EnableDALError : public ZVDescribedError {
  public:
    explicit EnableDALError(std::int32_t status)
        : ZVDescribedError("Phones and tablets can't be found.",
                           "EnableDALError(status: " + std::to_string(status) + ")"),
          status_(status) {}

    /// What the system returned.
    std::int32_t status() const { return status_; }

  private:
    std::int32_t status_;
};

}  // namespace zorvane
