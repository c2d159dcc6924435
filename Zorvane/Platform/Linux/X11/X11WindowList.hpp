// The window server's list of windows, on an X server.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGWindowList.hpp"

namespace zorvane {

class ApplicationCatalog;
class DesktopWatch;
struct DesktopState;
struct XWindow;

/// `CGWindowList` on a `DesktopWatch`, so that asking again costs next to nothing. Both options list the windows that
/// the window manager takes care of, with minimised ones and those of other virtual desktops as not on screen; without
/// a window manager, the mapped children of the root window.
class X11WindowList final : public CGWindowList {
  public:
    X11WindowList(std::shared_ptr<DesktopWatch> watch, std::shared_ptr<ApplicationCatalog> catalog);

    std::vector<CGWindowDescription> copyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow) override;
    std::optional<std::vector<CGWindowID>> create(CGWindowListOption option, CGWindowID relativeToWindow) override;
    std::vector<CGWindowDescription> createDescriptionFromArray(const std::vector<CGWindowID>& ids) override;
    /// The handler is called on the watch's thread.
    NSKeyValueObservation observe(std::function<void()> handler) override;

  private:
    struct Described {
        std::shared_ptr<const XWindow> window;
        CGWindowDescription description;
    };
    void update();

    const std::shared_ptr<DesktopWatch> watch_;
    const std::shared_ptr<ApplicationCatalog> catalog_;
    std::mutex mutex_;
    std::shared_ptr<const DesktopState> state_;  // guarded by mutex_
    std::vector<Described> windows_;             // guarded by mutex_; those of state_
};

}  // namespace zorvane
