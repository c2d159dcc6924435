// The applications of an X server's desktop.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "Zorvane/Platform/AppKit/NSWorkspace.hpp"

namespace zorvane {

class ApplicationCatalog;
class DesktopWatch;
class XSession;
struct DesktopState;
struct XWindow;

/// `NSWorkspace` on a `DesktopWatch`. An application is a process that owns windows; the one in front owns the window
/// that the window manager calls active. Handlers run on the watch's thread.
class X11Workspace final : public NSWorkspace {
  public:
    using ImageFileReader = std::function<std::optional<NSImage>(const std::filesystem::path&)>;

    /// `session` is what windows' icons are asked for on.
    X11Workspace(std::shared_ptr<DesktopWatch> watch, std::shared_ptr<ApplicationCatalog> catalog,
                 std::shared_ptr<XSession> session, ImageFileReader readImage);

    std::vector<NSRunningApplication> runningApplications() override;
    std::optional<NSRunningApplication> frontmostApplication() override;
    NSKeyValueObservation observeRunningApplications(ChangeHandler handler) override;
    NSKeyValueObservation observeFrontmostApplication(ChangeHandler handler) override;
    /// That of the installed application, else the largest one on its windows.
    std::optional<NSImage> icon(std::int32_t processIdentifier) override;

  private:
    NSRunningApplication applicationOf(const XWindow& window) const;
    std::optional<NSImage> windowIcon(const XWindow& window) const;

    const std::shared_ptr<DesktopWatch> watch_;
    const std::shared_ptr<ApplicationCatalog> catalog_;
    const std::shared_ptr<XSession> session_;
    const ImageFileReader readImage_;
    std::mutex mutex_;
    std::shared_ptr<const DesktopState> state_;       // guarded by mutex_
    std::vector<NSRunningApplication> applications_;  // guarded by mutex_; those of state_
};

}  // namespace zorvane
