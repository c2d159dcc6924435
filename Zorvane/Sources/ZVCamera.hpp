// A camera that can be recorded.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/ZVAsyncStream.hpp"
#include "Zorvane/ZVPublisher.hpp"

namespace zorvane {

/// One camera, the same object for as long as the process works on this desktop, also while it is unplugged. Its
/// properties change on the main executor and may be read on any thread; those of a camera that isn't connected are
/// those it had last.
class ZVCamera {
  public:
    enum class Availability {
        available,
        lidClosed,         ///< built in, and behind the closed lid
        unknownSuspended,  ///< there, but gives no pictures for now
        notConnected,      ///< unplugged or switched off
    };
    using List = std::vector<std::shared_ptr<ZVCamera>>;

    /// All cameras seen so far: those recorded before, the latest first, then the others by name. Cameras that look
    /// down on the desk are left out unless asked for. The first call asks the system, and from then on the library
    /// follows it by itself. Any thread.
    static List cameras(bool includeDeskView = false);
    /// The list, beginning with the one of now, then a new one after each change of a camera or of the order. Ends
    /// when it is dropped.
    static ZVAsyncStream<List> updates(bool includeDeskView = false);
    /// The available camera that was recorded last, else the system's main one, else the first one that is available;
    /// null if there is none. Reads the user's preferences from disk.
    static std::shared_ptr<ZVCamera> preferred();

    ~ZVCamera();
    ZVCamera(const ZVCamera&) = delete;
    ZVCamera& operator=(const ZVCamera&) = delete;

    /// By which the camera is known also after it was unplugged, and by which a schema names it.
    const std::string& id() const;
    /// Whether it looks down on the desk in front of the machine.
    bool isDeskView() const;

    /// The name for people.
    std::string localizedName() const;
    ZVPublisher<std::string> localizedNamePublisher() const;
    std::string modelID() const;  ///< empty when unknown
    ZVPublisher<std::string> modelIDPublisher() const;
    std::string manufacturer() const;  ///< empty when unknown
    ZVPublisher<std::string> manufacturerPublisher() const;
    Availability availability() const;
    ZVPublisher<Availability> availabilityPublisher() const;

    /// Two are equal if their ids are.
    bool operator==(const ZVCamera& other) const { return id() == other.id(); }

    /// One line for logs.
    std::string debugDescription() const;

  private:
    friend class CameraDiscovery;
    struct State;

    explicit ZVCamera(std::unique_ptr<State> state);

    const std::unique_ptr<State> state_;
};

/// The name of the case.
std::string_view rawValue(ZVCamera::Availability availability);
std::string_view debugDescription(ZVCamera::Availability availability);
/// What to tell people, in English.
std::string_view status(ZVCamera::Availability availability);
/// What people can do to make it available; empty if it is.
std::string_view recoverySuggestion(ZVCamera::Availability availability);

}  // namespace zorvane

template <>
struct std::hash<zorvane::ZVCamera> {
    std::size_t operator()(const zorvane::ZVCamera& camera) const noexcept {
        return std::hash<std::string>()(camera.id());
    }
};
