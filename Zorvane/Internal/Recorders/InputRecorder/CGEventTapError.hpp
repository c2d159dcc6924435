// Why mouse and keyboard can't be heard, or no longer.
#pragma once

#include <cstdint>

#include "Zorvane/ZVError.hpp"

namespace zorvane {

class CGEventTapError final : public ZVDescribedError {
  public:
    enum class Case : std::uint8_t { tapCreationFailed, tapDisabledByTimeout, tapDisabledByUserInput };

    explicit CGEventTapError(Case errorCase);

    Case errorCase() const { return case_; }

  private:
    Case case_;
};

}  // namespace zorvane
