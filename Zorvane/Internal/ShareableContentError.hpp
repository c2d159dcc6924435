// Why the shareable content could not be had in time, told by what the caller was about to do.
#pragma once

#include <cstdint>

#include "Zorvane/ZVError.hpp"

namespace zorvane {

class ShareableContentError final : public ZVDescribedError {
  public:
    enum class Case : std::uint8_t {
        timeout,
        timeoutRecordWindow,
        timeoutRecordDisplay,
        timeoutRecordSystemAudio,
        timeoutListWindows,
        timeoutListDisplays,
        timeoutListApplications,
    };

    explicit ShareableContentError(Case errorCase);

    Case errorCase() const { return case_; }

  private:
    Case case_;
};

}  // namespace zorvane
