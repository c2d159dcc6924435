// A microphone that can be recorded.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/ZVAsyncStream.hpp"
#include "Zorvane/ZVPublisher.hpp"

namespace zorvane {

/// One microphone, the same object for as long as the process works on this desktop, also while it is unplugged. Its
/// properties change on the main executor and may be read on any thread; those of a microphone that isn't connected
/// are those it had last.
class ZVMicrophone {
  public:
    enum class Availability {
        available,
        lidClosed,         ///< built in, and silent behind the closed lid
        unknownSuspended,  ///< there, but gives no sound for now
        notConnected,      ///< unplugged or switched off
    };
    using List = std::vector<std::shared_ptr<ZVMicrophone>>;

    /// All microphones seen so far: those recorded before, the latest first, then the others by name. The first call
    /// asks the system, and from then on the library follows it by itself. Any thread.
    static List microphones();
    /// The list, beginning with the one of now, then a new one after each change of a microphone or of the order. Ends
    /// when it is dropped.
    static ZVAsyncStream<List> updates();
    /// The available microphone that was recorded last, else the system's main one, else the first one that is
    /// available; null if there is none. Reads the user's preferences from disk.
    static std::shared_ptr<ZVMicrophone> preferred();

    ~ZVMicrophone();
    ZVMicrophone(const ZVMicrophone&) = delete;
    ZVMicrophone& operator=(const ZVMicrophone&) = delete;

    /// By which the microphone is known also after it was unplugged, and by which a schema names it.
    const std::string& id() const;

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
    bool operator==(const ZVMicrophone& other) const { return id() == other.id(); }

    /// One line for logs.
    std::string debugDescription() const;

  private:
    friend class MicrophoneDiscovery;
    struct State;

    explicit ZVMicrophone(std::unique_ptr<State> state);

    const std::unique_ptr<State> state_;
};

/// The name of the case.
std::string_view rawValue(ZVMicrophone::Availability availability);
std::string_view debugDescription(ZVMicrophone::Availability availability);
/// What to tell people, in English.
std::string_view status(ZVMicrophone::Availability availability);
/// What people can do to make it available; empty if it is.
std::string_view recoverySuggestion(ZVMicrophone::Availability availability);

}  // namespace zorvane

template <>
struct std::hash<zorvane::ZVMicrophone> {
    std::size_t operator()(const zorvane::ZVMicrophone& microphone) const noexcept {
        return std::hash<std::string>()(microphone.id());
    }
};
