// A recorder without a source: each operation passes, waits for the test, or throws.
#pragma once

#include <exception>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/Recorder.hpp"

namespace zorvane {

/// One operation of a scripted recorder. Any thread.
class ScriptedStep {
  public:
    /// The operation waits, from its next run on, until `release` or its cancellation.
    void hold() {
        std::lock_guard lock(mutex_);
        auto [continuation, waiter] = makeContinuation();
        release_ = std::move(continuation);
        waiter_.emplace(std::move(waiter));
    }
    void release() {
        std::lock_guard lock(mutex_);
        if (release_) {
            release_->resume();
        }
    }
    /// The operation throws when it has run, or was released.
    void failWith(std::exception_ptr error) {
        std::lock_guard lock(mutex_);
        error_ = std::move(error);
    }

    int runs() const {
        std::lock_guard lock(mutex_);
        return runs_;
    }
    bool wasCancelled() const {
        std::lock_guard lock(mutex_);
        return wasCancelled_;
    }

    Task<> run() {
        if (auto waiter = begin()) {
            const ZVOutcome<> waited = co_await waitFor(std::move(*waiter)).outcome();
            noteCancellation(waited.isCancelled());
            waited.value();
        }
        throwIfFailing();
    }

  private:
    static Task<> waitFor(Waiter<> waiter) { co_await std::move(waiter); }

    std::optional<Waiter<>> begin() {
        std::lock_guard lock(mutex_);
        ++runs_;
        return std::exchange(waiter_, std::nullopt);
    }
    void noteCancellation(bool cancelled) {
        std::lock_guard lock(mutex_);
        wasCancelled_ = cancelled;
    }
    void throwIfFailing() {
        std::lock_guard lock(mutex_);
        if (error_) {
            std::rethrow_exception(error_);
        }
    }

    mutable std::mutex mutex_;  // guards all below
    std::optional<Continuation<>> release_;
    std::optional<Waiter<>> waiter_;
    std::exception_ptr error_;
    int runs_ = 0;
    bool wasCancelled_ = false;
};

class ScriptedRecorder final : public Recorder {
  public:
    explicit ScriptedRecorder(std::string id) : id_(std::move(id)) {}

    ScriptedStep preparing;
    ScriptedStep finishing;
    /// Set before the recording.
    std::vector<ZVBundleInfo::FileAsset> files;
    RecorderStatistics counted;
    /// Set when the conductor has expanded the schema.
    AbortHandler signal;

    const std::string& id() const override { return id_; }
    Task<> prepare() override { return preparing.run(); }
    Task<> cancel() override { co_return; }
    Task<std::vector<ZVBundleInfo::FileAsset>> finish() override {
        co_await finishing.run();
        co_return files;
    }
    RecorderStatistics statistics() const override { return counted; }

  private:
    const std::string id_;
};

}  // namespace zorvane
