// A question to the desktop, which may be slow to answer, or hang.
#pragma once

#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <utility>

#include "UserError.hpp"
#include "Zorvane/ZVOutcome.hpp"

namespace zorvane::cli {

/// What `ask()` returns or throws. It runs on a thread that is left behind when stop is requested first: then this
/// throws that the recording was stopped before it began.
template <class Ask>
auto awaitDesktop(Ask ask, std::stop_token stopToken) {
    using Value = decltype(ask());
    struct Answer {
        std::mutex mutex;
        std::condition_variable_any given;
        std::optional<ZVOutcome<Value>> value;  // guarded by mutex
    };
    const auto answer = std::make_shared<Answer>();
    std::thread([answer, ask = std::move(ask)] {
        auto value = [&] {
            try {
                return ZVOutcome<Value>::success(ask());
            } catch (...) {
                return ZVOutcome<Value>::failure(std::current_exception());
            }
        }();
        const std::lock_guard lock(answer->mutex);
        answer->value = std::move(value);
        answer->given.notify_all();
    }).detach();
    std::unique_lock lock(answer->mutex);
    if (!answer->given.wait(lock, std::move(stopToken), [&] { return answer->value.has_value(); })) {
        throw stoppedBeforeStart();
    }
    // Taken out, so that the thread lets go of nothing that is read here.
    ZVOutcome<Value> value = *std::exchange(answer->value, std::nullopt);
    return std::move(value).value();
}

}  // namespace zorvane::cli
