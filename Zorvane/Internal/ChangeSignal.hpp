// Wakes loops that look at something again whenever it may have changed.
#pragma once

#include <cstdint>
#include <memory>
#include <variant>

#include "Zorvane/Internal/Concurrency/AsyncStream.hpp"

namespace zorvane {

/// Any number of loops wait on one signal, each with a stream of its own:
///
///     do { look(); } while (co_await changes.next());
///
/// A change that comes while a loop looks is kept, so that it looks again; many of them count as one. When the signal
/// goes, the streams end. Any thread.
class ChangeSignal {
  public:
    using Change = std::monostate;

    ChangeSignal();
    ChangeSignal(const ChangeSignal&) = delete;
    ChangeSignal& operator=(const ChangeSignal&) = delete;
    ~ChangeSignal();

    /// The changes from now on. Ends also when it is dropped.
    AsyncStream<Change> changes();
    void send();

  private:
    struct Listeners;
    const std::shared_ptr<Listeners> listeners_;
};

}  // namespace zorvane
