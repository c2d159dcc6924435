// Screen capture from an X server.
#pragma once

#include <future>
#include <memory>
#include <mutex>
#include <vector>

#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"

namespace zorvane {

class XSession;

/// `SCScreenCapture` on XCB. Content is asked for on a thread per request, so that a server that hangs holds up nobody
/// else. Not to be destroyed inside a content handler.
class X11ScreenCapture final : public SCScreenCapture {
  public:
    explicit X11ScreenCapture(std::shared_ptr<XSession> session);
    /// Waits until handlers under way have ended.
    ~X11ScreenCapture() override;

    void getShareableContent(SCShareableContentScope scope, ContentHandler handler) override;
    std::shared_ptr<SCStream> makeStream(const SCContentFilter& filter, const SCStreamConfiguration& configuration,
                                         std::weak_ptr<SCStreamDelegate> delegate) override;
    /// Cuts the connection that content is asked for on; the next request makes a new one. Requests that wait for the
    /// server end with an error.
    void restartCaptureService(std::function<void(std::exception_ptr error)> handler) override;

  private:
    SCShareableContent readContent(SCShareableContentScope scope) const;

    const std::shared_ptr<XSession> session_;
    std::mutex mutex_;
    std::vector<std::future<void>> requests_;  // guarded by mutex_; those under way, and some that have ended
};

}  // namespace zorvane
