#include "Zorvane/Internal/ShareableContent.hpp"

#include <fmt/format.h>

#include <array>
#include <atomic>
#include <chrono>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/Sleep.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/Precondition.hpp"
#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"

namespace zorvane {
namespace {

using std::chrono::milliseconds;

// When the requests of one retrieval are made, and when it is given up, from its start.
constexpr std::array attemptDelays{milliseconds(0), milliseconds(2000), milliseconds(4000)};
constexpr milliseconds timeoutDelay{4100};

/// What outlives single retrievals, once per platform.
struct ContentAccess {
    std::shared_ptr<TokenBucket> tokenBucket = std::make_shared<TokenBucket>(Logger::forType<ShareableContent>());
    std::atomic<bool> returnedOnce{false};  // whether any retrieval has ever succeeded
};

std::shared_ptr<ContentAccess> contentAccess() {
    return Platform::current()->world().shared<ContentAccess>([] { return std::make_shared<ContentAccess>(); });
}

/// What a retrieval has lined up. What still sleeps when the retrieval ends is woken, and ends too.
class TimedTasks {
  public:
    TimedTasks() = default;
    TimedTasks(const TimedTasks&) = delete;
    TimedTasks& operator=(const TimedTasks&) = delete;
    ~TimedTasks() {
        for (const TaskHandle<>& task : tasks_) {
            task.cancel();
        }
    }

    void add(TaskHandle<> task) { tasks_.push_back(std::move(task)); }

  private:
    std::vector<TaskHandle<>> tasks_;
};

/// The content, or nothing after a time-out. Any other error is thrown.
Task<std::optional<SCShareableContent>> contentUnlessTimeout(SCShareableContentScope scope) {
    try {
        SCShareableContent content = co_await ShareableContent::getContentWithRetries(scope);
        contentAccess()->returnedOnce = true;
        co_return std::optional(std::move(content));
    } catch (const ShareableContentError& error) {
        if (error.errorCase() != ShareableContentError::Case::timeout) {
            throw;
        }
    }
    co_return std::nullopt;
}

}  // namespace

std::shared_ptr<TokenBucket> ShareableContent::tokenBucket() {
    return contentAccess()->tokenBucket;
}

Task<SCShareableContent> ShareableContent::retrieve(ShareableContentError::Case timeoutError) {
    const std::shared_ptr<TokenBucket> bucket = tokenBucket();
    co_return co_await bucket->withToken(getContentWithRestart(SCShareableContentScope::all, timeoutError));
}

Task<SCShareableContent> ShareableContent::getContentWithRestart(SCShareableContentScope scope,
                                                                 ShareableContentError::Case timeoutError) {
    const Logger logger = Logger::forType<ShareableContent>();
    logger.debug("Retrieving shareable content");
    std::optional<SCShareableContent> content = co_await contentUnlessTimeout(scope);
    if (content) {
        logger.info("Retrieved shareable content.");
        co_return std::move(*content);
    }
    if (!contentAccess()->returnedOnce) {
        logger.warning("Timeout retrieving shareable content. Restarting replaykit deamon.");
        co_await restartReplayKitDeamon();
        logger.debug("Restarted replaykit deamon. Retrying.");
        content = co_await contentUnlessTimeout(scope);
        if (content) {
            logger.info("Retrieved shareable content after restart of replaykit deamon.");
            co_return std::move(*content);
        }
    }
    logger.error("Timeout retrieving shareable content");
    throw ShareableContentError(timeoutError);
}

Task<SCShareableContent> ShareableContent::getContentWithRetries(SCShareableContentScope scope) {
    const std::shared_ptr<ShareableContent> instance(new ShareableContent(scope));
    Task<SCShareableContent> retrieval = instance->getContent();
    co_return co_await std::move(retrieval).on(instance->executor_);
}

ShareableContent::ShareableContent(SCShareableContentScope scope)
    : scope_(scope),
      screenCapture_(Platform::current()->screenCapture),
      executor_(Executor::makeStrand("ShareableContent")),
      logger_(Logger::forType<ShareableContent>()) {}

Task<SCShareableContent> ShareableContent::getContent() {
    precondition(!continuation_, "Calling SharableContent.getContentWithRetries() multiple times not allowed");
    auto [continuation, waiter] = makeContinuation<SCShareableContent>();
    continuation_ = std::move(continuation);
    TimedTasks timed;
    for (std::size_t index = 0; index < attemptDelays.size(); ++index) {
        timed.add(spawn(attemptAfterDelay(shared_from_this(), static_cast<int>(index) + 1), executor_));
    }
    timed.add(spawn(timeOutAfterDelay(shared_from_this()), executor_));
    try {
        co_return co_await std::move(waiter);
    } catch (...) {
        takeContinuation();  // so that a cancelled call makes no further request
        throw;
    }
}

Task<> ShareableContent::attemptAfterDelay(std::shared_ptr<ShareableContent> self, int attempt) {
    const milliseconds delay = attemptDelays.at(static_cast<std::size_t>(attempt - 1));
    if (delay > milliseconds(0)) {
        co_await sleepFor(delay);
    }
    self->requestSharableContent(attempt);
}

Task<> ShareableContent::timeOutAfterDelay(std::shared_ptr<ShareableContent> self) {
    co_await sleepFor(timeoutDelay);
    self->throwTimeout();
}

void ShareableContent::requestSharableContent(int attempt) {
    if (!continuation_) {
        return;
    }
    logger_.trace([&] { return fmt::format("Requesting shareable content, attempt {}.", attempt); });
    auto answer = [self = shared_from_this()](SCShareableContent content, std::exception_ptr error) {
        auto deliver = [self, content = std::move(content), error = std::move(error)]() mutable {
            const auto continuation = self->takeContinuation();
            if (!continuation) {
                return;
            }
            if (error) {
                continuation->resumeThrowing(std::move(error));
            } else {
                continuation->resume(std::move(content));
            }
        };
        self->executor_->post(std::move(deliver));
    };
    screenCapture_->getShareableContent(scope_, std::move(answer));
}

void ShareableContent::throwTimeout() {
    if (const auto continuation = takeContinuation()) {
        continuation->resumeThrowing(ShareableContentError(ShareableContentError::Case::timeout));
    }
}

std::optional<Continuation<SCShareableContent>> ShareableContent::takeContinuation() {
    return std::exchange(continuation_, std::nullopt);
}

Task<> restartReplayKitDeamon() {
    auto [continuation, waiter] = makeContinuation();
    auto handler = [continuation = std::move(continuation)](std::exception_ptr error) {
        if (error) {
            continuation.resumeThrowing(std::move(error));
        } else {
            continuation.resume();
        }
    };
    Platform::current()->screenCapture->restartCaptureService(std::move(handler));
    co_await std::move(waiter);
}

}  // namespace zorvane
