// A stream that may end with an error.
#pragma once

#include <exception>
#include <optional>
#include <utility>

#include "Zorvane/Internal/Concurrency/AsyncStream.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/ZVOutcome.hpp"

namespace zorvane {

/// As `AsyncStream`, but for its end.
template <class T>
class AsyncThrowingStream {
    using Elements = AsyncStream<ZVOutcome<T>>;

  public:
    class Source;

    static std::pair<AsyncThrowingStream, Source> make(StreamBuffering buffering) {
        auto [elements, source] = Elements::make(buffering);
        return {AsyncThrowingStream(std::move(elements)), Source(std::move(source))};
    }

    /// Waits for the next value; nothing at the end of the stream. Throws the error that ended it, once, when all
    /// values before have been taken.
    Task<std::optional<T>> next() {
        std::optional<ZVOutcome<T>> element = co_await elements_.next();
        std::optional<T> value;
        if (element) {
            value.emplace(std::move(*element).value());
        }
        co_return value;
    }

  private:
    explicit AsyncThrowingStream(Elements elements) : elements_(std::move(elements)) {}

    Elements elements_;
};

/// Copies feed the same stream; any thread.
template <class T>
class AsyncThrowingStream<T>::Source {
  public:
    /// Does nothing once the stream has ended.
    void yield(T value) const { elements_.yield(ZVOutcome<T>::success(std::move(value))); }

    /// Ends the stream behind the values it still holds.
    void finish() const { elements_.finish(); }

    /// The same, with an error, which is not null.
    void finish(std::exception_ptr error) const {
        elements_.yield(ZVOutcome<T>::failure(std::move(error)));
        elements_.finish();
    }

  private:
    friend AsyncThrowingStream;

    explicit Source(typename Elements::Source elements) : elements_(std::move(elements)) {}

    typename Elements::Source elements_;
};

}  // namespace zorvane
