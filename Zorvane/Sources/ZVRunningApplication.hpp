// An application that runs on the desktop.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Platform/AppKit/NSImage.hpp"
#include "Zorvane/ZVAsyncStream.hpp"
#include "Zorvane/ZVPublisher.hpp"

namespace zorvane {

/// One process id's application, the same object for as long as this process works on this desktop, also when it has
/// quit. Its properties change on the main executor and may be read on any thread.
class ZVRunningApplication {
  public:
    enum class Availability { available, notRunning };

    /// Which applications a list holds.
    enum class FilterOptions {
        default_,  ///< all
    };

    using List = std::vector<std::shared_ptr<ZVRunningApplication>>;

    /// The running applications by name, as people sort names. The first call asks the desktop and blocks for it; from
    /// then on the library follows the desktop by itself. Any thread.
    static List applications(FilterOptions options = FilterOptions::default_);
    /// The list, beginning with the one of now, then each new one. Ends when it is dropped.
    static ZVAsyncStream<List> updates(FilterOptions options = FilterOptions::default_);

    ~ZVRunningApplication();
    ZVRunningApplication(const ZVRunningApplication&) = delete;
    ZVRunningApplication& operator=(const ZVRunningApplication&) = delete;

    /// The process id.
    std::int32_t id() const;
    std::optional<std::string> name() const;
    std::optional<std::string> bundleIdentifier() const;
    Availability availability() const;
    ZVPublisher<Availability> availabilityPublisher() const;

    /// The application's icon, or a picture of an empty window if it has none. May read files. Any thread.
    NSImage icon() const;

    /// Two are equal if their ids are.
    bool operator==(const ZVRunningApplication& other) const { return id() == other.id(); }

    /// One line for logs.
    std::string debugDescription() const;

  private:
    friend class ApplicationDiscovery;
    struct State;

    explicit ZVRunningApplication(std::unique_ptr<State> state);

    const std::unique_ptr<State> state_;
};

/// The name of the case.
std::string_view rawValue(ZVRunningApplication::Availability availability);
std::string_view debugDescription(ZVRunningApplication::Availability availability);

}  // namespace zorvane

template <>
struct std::hash<zorvane::ZVRunningApplication> {
    std::size_t operator()(const zorvane::ZVRunningApplication& application) const noexcept {
        return std::hash<std::int32_t>()(application.id());
    }
};
