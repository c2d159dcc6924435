// The writing side of an observable value.
#pragma once

#include <memory>
#include <utility>

#include "Zorvane/ZVPublisher.hpp"

namespace zorvane {

/// Owned by whoever keeps the value current. Reading is safe on any thread; writing happens on the main executor, or
/// while nobody else knows of the subject yet.
template <class T>
class CurrentValueSubject {
  public:
    CurrentValueSubject() : CurrentValueSubject(T()) {}
    explicit CurrentValueSubject(T value) : shared_(std::make_shared<detail::PublishedValue<T>>(std::move(value))) {}
    CurrentValueSubject(const CurrentValueSubject&) = delete;
    CurrentValueSubject& operator=(const CurrentValueSubject&) = delete;

    T value() const { return shared_->value(); }
    ZVPublisher<T> publisher() const { return ZVPublisher<T>(shared_); }

    /// Publishes `value`, also if it equals the present one.
    void send(T value) { shared_->send(std::move(value)); }

    /// Publishes `value` if it differs. Returns whether it did.
    bool update(T value) {
        if (shared_->value() == value) {
            return false;
        }
        shared_->send(std::move(value));
        return true;
    }

  private:
    std::shared_ptr<detail::PublishedValue<T>> shared_;
};

}  // namespace zorvane
