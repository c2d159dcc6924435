#include "Zorvane/Platform/Linux/X11/X11ScreenCapture.hpp"

#include <algorithm>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/Foundation/NSProcessInfo.hpp"
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

SCRunningApplication application(std::int32_t processID, const std::string& className, const std::string& instanceName,
                                 ApplicationCatalog& catalog) {
    auto identity = catalog.identify(processID, className, instanceName);
    return {.processID = processID,
            .bundleIdentifier = std::move(identity.identifier),
            .applicationName = std::move(identity.name)};
}

SCWindow shareable(const XWindow& window, ApplicationCatalog& catalog) {
    SCWindow result{.windowID = window.windowID,
                    .frame = window.frame,
                    .title = window.title,
                    .windowLayer = window.level,
                    .isOnScreen = window.isOnScreen};
    if (window.processID != 0) {
        result.owningApplication = application(window.processID, window.className, window.instanceName, catalog);
    }
    return result;
}

bool isAmong(const std::vector<SCRunningApplication>& applications, std::int32_t processID) {
    return std::any_of(applications.begin(), applications.end(),
                       [&](const SCRunningApplication& each) { return each.processID == processID; });
}

/// In the order of their frontmost windows. This process is one of them also without a window in the list, so that a
/// filter can keep out what it will open, and what the window manager doesn't take care of.
std::vector<SCRunningApplication> owners(const std::vector<SCWindow>& windows, ApplicationCatalog& catalog) {
    std::vector<SCRunningApplication> applications;
    for (const SCWindow& window : windows) {
        const auto& owner = window.owningApplication;
        if (owner && !isAmong(applications, owner->processID)) {
            applications.push_back(*owner);
        }
    }
    if (const std::int32_t self = processIdentifier(); !isAmong(applications, self)) {
        applications.push_back(application(self, "", "", catalog));
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
    content.applications = owners(content.windows, catalog);
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
