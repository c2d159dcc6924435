// A phone or tablet whose screen can be recorded.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/ZVAsyncStream.hpp"
#include "Zorvane/ZVPublisher.hpp"
#include "Zorvane/ZVTask.hpp"

namespace zorvane {

/// One device, the same object for as long as the process works on this desktop, also while it is unplugged. Its
/// properties change on the main executor and may be read on any thread; those of a device that isn't connected are
/// those it had last.
class ZVAppleDevice {
  public:
    enum class Availability {
        available,
        notPaired,             ///< its user has not yet confirmed that it trusts this machine
        notConnected,          ///< unplugged
        pairedNeedsConnect,    ///< known, but not attached by cable
        pairedNeedsReconnect,  ///< attached, but not working until it is attached anew
    };
    using List = std::vector<std::shared_ptr<ZVAppleDevice>>;

    /// All devices seen so far, by name. The first call switches such devices on and asks for them; it waits up to a
    /// second for those that are attached. From then on the library follows the system by itself.
    static ZVTask<List> appleDevices();
    /// The list, beginning with the one of now, then a new one after each change of a device. Ends when it is dropped.
    static ZVAsyncStream<List> updates();

    ~ZVAppleDevice();
    ZVAppleDevice(const ZVAppleDevice&) = delete;
    ZVAppleDevice& operator=(const ZVAppleDevice&) = delete;

    /// By which the device is known also after it was unplugged, and by which a schema names it.
    const std::string& id() const;

    /// The name its owner has given it.
    std::string localizedName() const;
    ZVPublisher<std::string> localizedNamePublisher() const;
    /// Such as "iPhone14,2"; nothing when unknown.
    std::optional<std::string> modelID() const;
    ZVPublisher<std::optional<std::string>> modelIDPublisher() const;
    Availability availability() const;
    ZVPublisher<Availability> availabilityPublisher() const;

    /// Two are equal if their ids are.
    bool operator==(const ZVAppleDevice& other) const { return id() == other.id(); }

    /// One line for logs.
    std::string debugDescription() const;

  private:
    friend class AppleDeviceDiscovery;
    struct State;

    explicit ZVAppleDevice(std::unique_ptr<State> state);

    const std::unique_ptr<State> state_;
};

/// The name of the case.
std::string_view rawValue(ZVAppleDevice::Availability availability);
std::string_view debugDescription(ZVAppleDevice::Availability availability);
/// What to tell people, in English.
std::string_view status(ZVAppleDevice::Availability availability);
/// What people can do to make it available; empty if it is.
std::string_view recoverySuggestion(ZVAppleDevice::Availability availability);

}  // namespace zorvane

template <>
struct std::hash<zorvane::ZVAppleDevice> {
    std::size_t operator()(const zorvane::ZVAppleDevice& device) const noexcept {
        return std::hash<std::string>()(device.id());
    }
};
