// Keeps the display objects current.
#pragma once

#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Zorvane/Internal/CGInterop/Display.hpp"
#include "Zorvane/Internal/Concurrency/AsyncStream.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/CurrentValueSubject.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Sources/ZVDisplay.hpp"
#include "Zorvane/ZVOutcome.hpp"

namespace zorvane {

/// Reads the displays after each reconfiguration, off the main executor, and keeps one object for every display ever
/// seen. Updates happen on the main executor and ask nobody. Reading is safe on any thread.
class DisplayDiscovery : public std::enable_shared_from_this<DisplayDiscovery> {
  public:
    using List = ZVDisplay::List;

    /// The current world's, started.
    static std::shared_ptr<DisplayDiscovery> shared();

    DisplayDiscovery();
    ~DisplayDiscovery();

    /// Reads the displays for the first time, and begins to follow the desktop.
    void start();

    List displays() const { return displays_.value(); }
    AsyncStream<List> updates() const { return displays_.publisher().values(); }
    /// The display with this id; null if there never was one.
    std::shared_ptr<ZVDisplay> find(std::uint32_t id) const;
    /// See `ZVDisplay::preferred`.
    std::shared_ptr<ZVDisplay> getPreferred() const;
    /// What the last read failed with, or null.
    std::exception_ptr failure() const { return failure_.value(); }

    /// Reads the displays again, soon. Any thread.
    void triggerUpdate();

  private:
    struct NamedDisplay {
        CGInterop::Display display;
        std::string name;
    };
    struct Answer {
        std::vector<NamedDisplay> disps;  // all active ones
        bool isLaptop = false;
    };
    using Reading = ZVOutcome<Answer>;

    static Reading read();
    static Task<> follow(std::weak_ptr<DisplayDiscovery> weak,
                         AsyncStream<CGInterop::Display::Reconfiguration> reconfigurations);
    void refresh();
    void apply(const Reading& reading);
    /// Brings the objects up to date. Of several displays with one serial number the first one counts.
    void updateDisplays(const std::vector<NamedDisplay>& disps, bool isLaptop);
    bool put(const NamedDisplay& seen);
    bool noteAbsence(ZVDisplay& display, bool isLaptop);
    void publish(bool anyChanged);

    const Logger logger_;
    const std::shared_ptr<Executor> reader_;  // a strand: answers arrive on the main executor in the order of asking
    CurrentValueSubject<List> displays_;
    CurrentValueSubject<std::exception_ptr> failure_;
    std::map<std::uint32_t, std::shared_ptr<ZVDisplay>> allDisplays_;  // belongs to the main executor; never shrinks
    TaskHandle<> zvDisplaysTask_;
};

}  // namespace zorvane
