// The abort signals that a recorder has given.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "Zorvane/Internal/AbortSignal.hpp"

namespace zorvane::testing {

/// Any thread.
class AbortSignals {
  public:
    /// What a recorder is made with. This object must outlive it.
    AbortHandler handler() {
        return [this](const AbortSignal& signal) {
            const std::lock_guard lock(mutex_);
            seen_.push_back(signal.debugDescription());
        };
    }
    /// Their debug descriptions.
    std::vector<std::string> seen() const {
        const std::lock_guard lock(mutex_);
        return seen_;
    }

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> seen_;
};

}  // namespace zorvane::testing
