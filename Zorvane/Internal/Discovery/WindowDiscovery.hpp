// Keeps the window objects current.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "Zorvane/Internal/CGInterop/Window.hpp"
#include "Zorvane/Internal/Concurrency/AsyncStream.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Internal/CurrentValueSubject.hpp"
#include "Zorvane/Internal/Discovery/AnswerPoll.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservation.hpp"
#include "Zorvane/Sources/ZVWindow.hpp"

namespace zorvane {

class DisplayDiscovery;

/// Polls the windows on the screen, at once when another application comes to front, and keeps one object for every
/// window ever seen. Updates happen on the main executor. Reading is safe on any thread.
class WindowDiscovery : public std::enable_shared_from_this<WindowDiscovery> {
  public:
    using List = ZVWindow::List;

    /// The current world's, started.
    static std::shared_ptr<WindowDiscovery> shared();

    WindowDiscovery();

    /// Reads the windows for the first time, and begins to poll.
    void start();

    /// The windows on the screen, front to back.
    List windows() const { return windows_.value(); }
    AsyncStream<List> updates(ZVWindow::FilterOptions options) const;
    /// The window with this id, also if it has been closed; null if there never was one.
    std::shared_ptr<ZVWindow> find(std::uint32_t id) const;

    /// Brings the objects up to date with a list of windows. Main executor only.
    void updateWindows(const std::vector<CGInterop::Window>& wins);

  private:
    struct Answer {
        std::vector<CGInterop::Window> windows;
        std::vector<CGRect> displayFrames;  // of the available ones: they decide what is visible

        bool operator==(const Answer&) const = default;
    };

    std::shared_ptr<ZVWindow> put(const CGInterop::Window& seen, const std::vector<CGRect>& displayFrames);

    const Logger logger_;
    std::shared_ptr<DisplayDiscovery> displays_;
    CurrentValueSubject<List> windows_;
    mutable Mutex mutex_;
    std::map<std::uint32_t, std::shared_ptr<ZVWindow>> allWindows_ ZV_GUARDED_BY(mutex_);  // never shrinks
    std::shared_ptr<AnswerPoll<Answer>> cgWindows_;
    NSKeyValueObservation frontmostApplicationObservation_;
};

}  // namespace zorvane
