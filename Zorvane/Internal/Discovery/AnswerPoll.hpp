// Follows what a system tells only to those who ask.
#pragma once

#include <fmt/format.h>

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/Sleep.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {

/// Asks ten times a second, off the main executor, and tells of each answer that differs from the one before. A
/// question that throws counts as not asked. Ends with the object. Any thread.
template <class Answer>
class AnswerPoll : public std::enable_shared_from_this<AnswerPoll<Answer>> {
  public:
    /// `ask` may block. `tell` runs on the main executor; both may run a last time after the object has gone.
    struct Parameters {
        std::string label;  ///< for threads, and in the log after "Failed to get "
        std::function<Answer()> ask;
        std::function<void(const Answer&)> tell;
        Logger logger;
    };

    static constexpr std::chrono::milliseconds interval{100};
    static constexpr std::chrono::milliseconds tolerance{100};

    explicit AnswerPoll(Parameters parameters)
        : parameters_(std::move(parameters)), asker_(Executor::makeStrand(parameters_.label)) {}
    ~AnswerPoll() { loop_.cancel(); }
    AnswerPoll(const AnswerPoll&) = delete;
    AnswerPoll& operator=(const AnswerPoll&) = delete;

    /// Asks for the first time, and tells inside this call; then polls.
    void start() {
        if (const auto answer = newAnswer()) {
            parameters_.tell(*answer);
        }
        loop_ = spawn(poll(this->weak_from_this()), asker_);
    }

    /// Asks now, out of turn, without waiting for it.
    void askNow() {
        asker_->post([weak = this->weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->refresh();
            }
        });
    }

  private:
    static Task<> poll(std::weak_ptr<AnswerPoll> weak) {
        while (askAgain(weak)) {
            co_await sleepFor(interval, tolerance);
        }
    }

    static bool askAgain(const std::weak_ptr<AnswerPoll>& weak) {
        const auto self = weak.lock();
        if (self) {
            self->refresh();
        }
        return self != nullptr;
    }

    void refresh() {
        if (auto answer = newAnswer()) {
            Executor::main()->post([tell = parameters_.tell, answer = std::move(answer)] { tell(*answer); });
        }
    }

    /// Null if it is the same as before or if there is none.
    std::shared_ptr<const Answer> newAnswer() {
        const PoolBlockingScope blocking;
        try {
            Answer answer = parameters_.ask();
            isFailing_ = false;
            if (lastAnswer_ && *lastAnswer_ == answer) {
                return nullptr;
            }
            lastAnswer_ = std::make_shared<const Answer>(std::move(answer));
            return lastAnswer_;
        } catch (...) {
            noteFailure(std::current_exception());
            return nullptr;
        }
    }

    /// Logs the first one of a row.
    void noteFailure(const std::exception_ptr& error) {
        if (!std::exchange(isFailing_, true)) {
            parameters_.logger.error(
                [&] { return fmt::format("Failed to get {}: {}", parameters_.label, debugDescription(error)); });
        }
    }

    const Parameters parameters_;
    const std::shared_ptr<Executor> asker_;     // a strand; what it works on stands below
    std::shared_ptr<const Answer> lastAnswer_;  // null before the first one
    bool isFailing_ = false;
    TaskHandle<> loop_;
};

}  // namespace zorvane
