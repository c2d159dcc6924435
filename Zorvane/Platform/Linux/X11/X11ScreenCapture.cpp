#include "Zorvane/Platform/Linux/X11/X11ScreenCapture.hpp"

#include <algorithm>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/Linux/System/ApplicationCatalog.hpp"
#include "Zorvane/Platform/Linux/X11/X11Stream.hpp"
#include "Zorvane/Platform/Linux/X11/XDisplayList.hpp"
#include "Zorvane/Platform/Linux/X11/XSession.hpp"
#include "Zorvane/Platform/Linux/X11/XWindowList.hpp"

namespace zorvane {
namespace {

constexpr CGWindowLevel desktopLevel = CGWindowLevelForKey(CGWindowLevelKey::desktopWindow);

bool isIn(SCShareableContentScope scope, const XWindow& window) {
    return scope == SCShareableContentScope::all || (window.isOnScreen && window.level != desktopLevel);
}

SCWindow shareable(const XWindow& window, ApplicationCatalog& catalog) {
    SCWindow result{.windowID = window.windowID,
                    .frame = window.frame,
                    .title = window.title,
                    .windowLayer = window.level,
                    .isOnScreen = window.isOnScreen};
    if (window.processID != 0) {
        auto identity = catalog.identify(window.processID, window.className, window.instanceName);
        result.owningApplication = SCRunningApplication{.processID = window.processID,
                                                        .bundleIdentifier = std::move(identity.identifier),
                                                        .applicationName = std::move(identity.name)};
    }
    return result;
}

/// In the order of their frontmost windows.
std::vector<SCRunningApplication> owners(const std::vector<SCWindow>& windows) {
    std::vector<SCRunningApplication> applications;
    for (const SCWindow& window : windows) {
        const auto& owner = window.owningApplication;
        if (owner && std::none_of(applications.begin(), applications.end(), [&](const SCRunningApplication& each) {
                return each.processID == owner->processID;
            })) {
            applications.push_back(*owner);
        }
    }
    return applications;
}

SCShareableContent readContent(XSession& session, ApplicationCatalog& catalog, SCShareableContentScope scope) {
    const PoolBlockingScope blocking;
    const XQuery query = session.query();
    SCShareableContent content;
    for (const XDisplay& display : readDisplays(*query)) {
        content.displays.push_back({.displayID = display.displayID, .frame = display.properties.bounds});
    }
    for (const XWindow& window : readWindows(*query)) {
        if (isIn(scope, window)) {
            content.windows.push_back(shareable(window, catalog));
        }
    }
    content.applications = owners(content.windows);
    return content;
}

}  // namespace

X11ScreenCapture::X11ScreenCapture(std::shared_ptr<XSession> session, std::shared_ptr<ApplicationCatalog> catalog)
    : session_(std::move(session)), catalog_(std::move(catalog)) {}

X11ScreenCapture::~X11ScreenCapture() {
    session_->reset();
}

void X11ScreenCapture::getShareableContent(SCShareableContentScope scope, ContentHandler handler) {
    auto answer = [session = session_, catalog = catalog_, scope, handler = std::move(handler)] {
        SCShareableContent content;
        std::exception_ptr error;
        try {
            content = readContent(*session, *catalog, scope);
        } catch (...) {
            error = std::current_exception();
        }
        handler(std::move(content), std::move(error));
    };
    Executor::pool()->post(std::move(answer));
}

std::shared_ptr<SCStream> X11ScreenCapture::makeStream(const SCContentFilter& filter,
                                                       const SCStreamConfiguration& configuration,
                                                       std::weak_ptr<SCStreamDelegate> delegate) {
    return std::make_shared<X11Stream>(filter, configuration, std::move(delegate));
}

void X11ScreenCapture::restartCaptureService(std::function<void(std::exception_ptr error)> handler) {
    session_->reset();
    handler(nullptr);
}

}  // namespace zorvane
