// Screen capture from an X server.
#pragma once

#include <memory>

#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"

namespace zorvane {

class ApplicationCatalog;
class XSession;

/// `SCScreenCapture` on XCB. Content is asked for on the pool, and a request that waits for a server that hangs holds
/// up nobody else there. Handlers run on the pool.
class X11ScreenCapture final : public SCScreenCapture {
  public:
    X11ScreenCapture(std::shared_ptr<XSession> session, std::shared_ptr<ApplicationCatalog> catalog);
    /// Requests that wait for the server end with an error. Their handlers may still run afterwards.
    ~X11ScreenCapture() override;

    void getShareableContent(SCShareableContentScope scope, ContentHandler handler) override;
    std::shared_ptr<SCStream> makeStream(const SCContentFilter& filter, const SCStreamConfiguration& configuration,
                                         std::weak_ptr<SCStreamDelegate> delegate) override;
    /// Cuts the connection that content is asked for on; the next request makes a new one. Requests that wait for the
    /// server end with an error.
    void restartCaptureService(std::function<void(std::exception_ptr error)> handler) override;

  private:
    const std::shared_ptr<XSession> session_;  // these are also held by each request under way
    const std::shared_ptr<ApplicationCatalog> catalog_;
};

}  // namespace zorvane
