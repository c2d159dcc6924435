// The one seam to the outside: a backend for each interface the library needs, and the world that lives on them.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <typeindex>
#include <utility>
#include <vector>

#include "Zorvane/Platform/Foundation/HostClock.hpp"

namespace zorvane {

class AVAudioConverting;
class AVCaptureDevices;
class AVMediaReading;
class AVMediaWriting;
class AVVideoConverting;
class CGDisplays;
class CGEvents;
class CGWindowList;
class CMIOHardware;
class CVDisplayLinks;
class CaptureAccess;
class IOPlatformExpert;
class NSCursors;
class NSEvents;
class NSUserDefaults;
class NSWorkspace;
class SCScreenCapture;

/// What exists once per platform: discoveries, the content bucket, preferences. Any thread may use it.
class World {
  public:
    /// The world's one object of type `T`; the first call makes it with `make()`, which returns a `std::shared_ptr<T>`.
    /// `make` may ask for further objects of this world. It must not wait for another thread that does.
    template <class T, class Make>
    std::shared_ptr<T> shared(Make&& make) {
        std::lock_guard lock(mutex_);
        if (auto existing = find(typeid(T))) {
            return std::static_pointer_cast<T>(existing);
        }
        std::shared_ptr<T> made = std::forward<Make>(make)();
        entries_.emplace_back(typeid(T), made);
        return made;
    }

    /// Lets go of all objects, the youngest first. Objects still held by others live on with them.
    void end();

  private:
    std::shared_ptr<void> find(std::type_index type) const;

    // Recursive, because making one object may ask for another.
    mutable std::recursive_mutex mutex_;
    std::vector<std::pair<std::type_index, std::shared_ptr<void>>> entries_;
};

/// One backend of each platform interface. A process has one current platform; it is installed by value before first
/// use, else the first use installs the default one.
struct Platform {
    std::shared_ptr<HostClock> clock;
    std::shared_ptr<CGDisplays> displays;
    std::shared_ptr<CGWindowList> windowList;
    std::shared_ptr<NSWorkspace> workspace;
    std::shared_ptr<CGEvents> events;
    std::shared_ptr<NSEvents> eventMonitors;
    std::shared_ptr<NSCursors> cursors;
    std::shared_ptr<CVDisplayLinks> displayLinks;
    std::shared_ptr<NSUserDefaults> userDefaults;
    std::shared_ptr<CaptureAccess> captureAccess;
    std::shared_ptr<AVCaptureDevices> captureDevices;
    std::shared_ptr<CMIOHardware> captureHardware;
    std::shared_ptr<IOPlatformExpert> platformExpert;
    std::shared_ptr<SCScreenCapture> screenCapture;
    std::shared_ptr<AVAudioConverting> audioConverting;
    std::shared_ptr<AVVideoConverting> videoConverting;
    std::shared_ptr<AVMediaWriting> mediaWriting;
    std::shared_ptr<AVMediaReading> mediaReading;

    /// The platform in force. Never null, and stays valid for as long as the caller holds it. Any thread.
    static std::shared_ptr<const Platform> current();

    /// Puts `platform` in force with a fresh world and ends the world before it. Members left null take the default
    /// backend. Recordings under way keep the backends they hold.
    static void install(Platform platform);

    World& world() const { return *world_; }

  private:
    std::shared_ptr<World> world_ = std::make_shared<World>();
};

}  // namespace zorvane
