// A display that can be recorded.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/ZVAsyncStream.hpp"
#include "Zorvane/ZVPublisher.hpp"

namespace zorvane {

/// One display, the same object for as long as the process works on this desktop, also while it is unplugged. Its
/// properties change on the main executor and may be read on any thread; those of a display that is not available are
/// those it had last.
class ZVDisplay {
  public:
    enum class Availability {
        available,
        lidClosed,     ///< built in, and behind the closed lid
        notConnected,  ///< unplugged or switched off
    };
    using List = std::vector<std::shared_ptr<ZVDisplay>>;

    /// All displays seen so far, in ascending order of `displayID`. The first call asks the desktop and blocks for it;
    /// from then on the library follows the desktop by itself. A desktop that can't be asked leaves the list as it was,
    /// empty at first (`discoveryFailure`). Any thread.
    static List displays();
    /// The available display that was recorded last, else the main one; null if there is none. Blocks as `displays`
    /// does.
    static std::shared_ptr<ZVDisplay> preferred();
    /// The list, beginning with the one of now, then a new one after each change of a display or of the order. Ends
    /// when it is dropped.
    static ZVAsyncStream<List> updates();
    /// What kept the displays from being read the last time; null if nothing did. Blocks as `displays` does.
    static std::exception_ptr discoveryFailure();

    ~ZVDisplay();
    ZVDisplay(const ZVDisplay&) = delete;
    ZVDisplay& operator=(const ZVDisplay&) = delete;

    /// The number by which the display is known also after it was unplugged, and by which a schema names it.
    std::uint32_t id() const;
    /// What the desktop calls it now.
    std::uint32_t displayID() const;
    bool isBuiltIn() const;

    /// The name for people.
    std::string localizedName() const;
    ZVPublisher<std::string> localizedNamePublisher() const;
    bool isMain() const;
    ZVPublisher<bool> isMainPublisher() const;
    /// In points; the origin of all displays is the top left of the main one, y grows downward.
    CGRect frame() const;
    ZVPublisher<CGRect> framePublisher() const;
    Availability availability() const;
    ZVPublisher<Availability> availabilityPublisher() const;

    /// Two are equal if their ids are.
    bool operator==(const ZVDisplay& other) const { return id() == other.id(); }

    /// One line for logs.
    std::string debugDescription() const;

  private:
    friend class DisplayDiscovery;
    struct State;

    explicit ZVDisplay(std::unique_ptr<State> state);

    const std::unique_ptr<State> state_;
};

/// The name of the case.
std::string_view rawValue(ZVDisplay::Availability availability);
std::string_view debugDescription(ZVDisplay::Availability availability);
/// What to tell people, in English.
std::string_view status(ZVDisplay::Availability availability);
/// What people can do to make it available; empty if it is.
std::string_view recoverySuggestion(ZVDisplay::Availability availability);

}  // namespace zorvane

template <>
struct std::hash<zorvane::ZVDisplay> {
    std::size_t operator()(const zorvane::ZVDisplay& display) const noexcept {
        return std::hash<std::uint32_t>()(display.id());
    }
};
