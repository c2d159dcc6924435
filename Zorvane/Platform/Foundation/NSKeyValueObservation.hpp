// The token of an observation.
#pragma once

#include <functional>
#include <utility>

namespace zorvane {

/// Ends an observation when it goes. After that no call begins; one that is under way on another thread may still
/// finish, unless the one who gives out the token promises more.
class [[nodiscard]] NSKeyValueObservation {
  public:
    NSKeyValueObservation() = default;
    explicit NSKeyValueObservation(std::function<void()> end) : end_(std::move(end)) {}
    NSKeyValueObservation(NSKeyValueObservation&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
    NSKeyValueObservation& operator=(NSKeyValueObservation&& other) noexcept {
        std::swap(end_, other.end_);
        return *this;
    }
    ~NSKeyValueObservation() { invalidate(); }

    void invalidate() {
        if (const auto end = std::exchange(end_, nullptr)) {
            end();
        }
    }

  private:
    std::function<void()> end_;
};

}  // namespace zorvane
