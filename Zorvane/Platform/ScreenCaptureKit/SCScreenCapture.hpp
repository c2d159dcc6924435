// The entry to screen capture: what can be captured, and streams of it.
#pragma once

#include <exception>
#include <functional>
#include <memory>

#include "Zorvane/Platform/ScreenCaptureKit/SCContentFilter.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCShareableContent.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

namespace zorvane {

/// One per platform. Any thread may call.
class SCScreenCapture {
  public:
    /// Either the content, or an error and content that means nothing.
    using ContentHandler = std::function<void(SCShareableContent content, std::exception_ptr error)>;

    virtual ~SCScreenCapture() = default;

    /// Lists what is there. The handler is called at most once, on any thread; it may never be called when the window
    /// server hangs, so callers keep a time-out of their own.
    virtual void getShareableContent(SCShareableContentScope scope, ContentHandler handler) = 0;

    /// A stream that shows what `filter` lets through. Held by the caller; `delegate` is held weakly. Errors show at
    /// `startCapture`.
    virtual std::shared_ptr<SCStream> makeStream(const SCContentFilter& filter,
                                                 const SCStreamConfiguration& configuration,
                                                 std::weak_ptr<SCStreamDelegate> delegate) = 0;

    /// Brings a capture service that no longer answers back to life. The handler is called exactly once.
    virtual void restartCaptureService(std::function<void(std::exception_ptr error)> handler) = 0;
};

}  // namespace zorvane
