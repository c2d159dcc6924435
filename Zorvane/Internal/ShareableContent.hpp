// The list of what can be captured, asked for in a way that survives a capture service that hangs.
#pragma once

#include <memory>
#include <optional>

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/ShareableContentError.hpp"
#include "Zorvane/Internal/TokenBucket.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCShareableContent.hpp"

namespace zorvane {

class SCScreenCapture;

/// One retrieval of the shareable content: up to three requests at fixed moments, the first answer wins, and a time-out
/// after 4.1 seconds. A serialised object that serves a single call.
class ShareableContent : public std::enable_shared_from_this<ShareableContent> {
  public:
    /// All content there is, retrieved while holding the process's one token. Throws as `getContentWithRestart` does.
    static Task<SCShareableContent> retrieve(ShareableContentError::Case timeoutError);

    /// One retrieval at a time in the process: every caller enters the bucket before it retrieves and exits after.
    static std::shared_ptr<TokenBucket> tokenBucket();

    /// Retrieves the content. The first time-out in a process that never had an answer restarts the capture service
    /// and tries once more; a final time-out throws `timeoutError`. Any other error is passed on at once. Takes at most
    /// 4.1 seconds, or 8.2 seconds and the restart. The caller holds the token of `tokenBucket`.
    static Task<SCShareableContent> getContentWithRestart(SCShareableContentScope scope,
                                                          ShareableContentError::Case timeoutError);

    /// One retrieval on a fresh instance. Throws `ShareableContentError` with `timeout`, or the platform's error.
    static Task<SCShareableContent> getContentWithRetries(SCShareableContentScope scope);

  private:
    explicit ShareableContent(SCShareableContentScope scope);

    Task<SCShareableContent> getContent();
    static Task<> attemptAfterDelay(std::shared_ptr<ShareableContent> self, int attempt);
    static Task<> timeOutAfterDelay(std::shared_ptr<ShareableContent> self);
    void requestSharableContent(int attempt);
    void throwTimeout();
    std::optional<Continuation<SCShareableContent>> takeContinuation();

    const SCShareableContentScope scope_;
    const std::shared_ptr<SCScreenCapture> screenCapture_;
    const std::shared_ptr<Executor> executor_;  // its operations run here, one at a time
    const Logger logger_;
    std::optional<Continuation<SCShareableContent>> continuation_;  // belongs to executor_
};

/// Brings a capture service that doesn't answer back to life. Throws when that can't be started.
Task<> restartReplayKitDeamon();

}  // namespace zorvane
