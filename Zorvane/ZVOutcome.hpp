// How a task ended: with a value, with an error, or cancelled.
#pragma once

#include <exception>
#include <type_traits>
#include <utility>
#include <variant>

namespace zorvane {

/// Thrown from the wait of a task that has been cancelled. It is an outcome of its own and no failure: code that
/// reports errors lets it pass.
struct ZVCancelled final : std::exception {
    const char* what() const noexcept override;
};

/// True if `error` holds a `ZVCancelled`. A null pointer holds none.
bool isCancellation(const std::exception_ptr& error) noexcept;

/// A task's value, or what it threw. Copyable if `T` is.
template <class T = void>
class ZVOutcome {
  public:
    using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

    /// An outcome with a value; nothing is passed if `T` is `void`.
    template <class... Arguments>
    static ZVOutcome success(Arguments&&... value) {
        return ZVOutcome(Storage(std::in_place_index<0>, std::forward<Arguments>(value)...));
    }

    /// An outcome that rethrows `error`, which is not null.
    static ZVOutcome failure(std::exception_ptr error) {
        return ZVOutcome(Storage(std::in_place_index<1>, std::move(error)));
    }

    bool isSuccess() const noexcept { return storage_.index() == 0; }
    bool isCancelled() const noexcept { return isCancellation(error()); }

    /// What was thrown, a cancellation included; null for a success.
    std::exception_ptr error() const noexcept { return isSuccess() ? nullptr : *std::get_if<1>(&storage_); }

    /// The value; throws what the task threw if there is none.
    T value() && {
        rethrowFailure();
        if constexpr (!std::is_void_v<T>) {
            return std::move(*std::get_if<0>(&storage_));
        }
    }

    T value() const& {
        rethrowFailure();
        if constexpr (!std::is_void_v<T>) {
            return *std::get_if<0>(&storage_);
        }
    }

  private:
    using Storage = std::variant<Value, std::exception_ptr>;

    explicit ZVOutcome(Storage storage) : storage_(std::move(storage)) {}

    void rethrowFailure() const {
        if (const auto* error = std::get_if<1>(&storage_)) {
            std::rethrow_exception(*error);
        }
    }

    Storage storage_;
};

}  // namespace zorvane
