// The devices now, and those from before.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservers.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureCard.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureDevice.hpp"

namespace zorvane {

/// Keeps one object for each device, also while it is away, for as long as somebody holds it. Any thread, but updates
/// come from one.
class PipeWireDeviceList {
  public:
    using Devices = std::vector<std::shared_ptr<PipeWireCaptureDevice>>;
    using Cards = std::vector<std::shared_ptr<PipeWireCaptureCard>>;

    /// In the order in which they came. Blocks until the first update, for `longestFirstUpdate` at most and only once.
    Devices devices();
    /// Those of them that are pairs. Blocks likewise.
    Cards cards();

    /// Of the device that is listed and whose node the session manager prefers; empty if there is none. Blocks like
    /// `devices`.
    std::string defaultDeviceID(AVMediaType mediaType);

    /// Whether PipeWire is there, as of the last update.
    bool isConnected();

    /// Calls `handler` after each change of the list, on the thread that updates.
    NSKeyValueObservation observe(std::function<void()> handler) { return observers_.add(std::move(handler)); }

    /// Calls `handler` after each update, whether or not the list has changed, on the thread that updates.
    NSKeyValueObservation observeUpdates(std::function<void()> handler) {
        return updateObservers_.add(std::move(handler));
    }

    void update(const PipeWireSources& sources);

    /// A service that answers does so in a few milliseconds; this is for one that hangs.
    static constexpr std::chrono::milliseconds longestFirstUpdate{1000};

  private:
    struct Listed {
        std::shared_ptr<PipeWireCaptureDevice> device;
        std::string nodeName;
    };

    void waitForFirstUpdate(MutexLock& lock) ZV_REQUIRES(mutex_);
    std::vector<Listed> listed();
    std::vector<Listed> makeList(const std::vector<PipeWireSource>& sources);
    Cards makeCards(const std::vector<PipeWireSource>& sources, const std::vector<Listed>& list);
    std::shared_ptr<PipeWireCaptureDevice> deviceFor(PipeWireDeviceDescription description);

    NSKeyValueObservers<> observers_;
    NSKeyValueObservers<> updateObservers_;
    PipeWireDeviceIDs ids_;                                              // the updating thread's own
    std::map<std::string, std::weak_ptr<PipeWireCaptureDevice>> known_;  // by id; the updating thread's own

    std::map<std::string, std::weak_ptr<PipeWireCaptureCard>> knownCards_;

    Mutex mutex_;
    std::condition_variable_any updated_;
    bool isUpdated_ ZV_GUARDED_BY(mutex_) = false;
    bool isConnected_ ZV_GUARDED_BY(mutex_) = false;
    std::vector<Listed> listed_ ZV_GUARDED_BY(mutex_);
    Cards cards_ ZV_GUARDED_BY(mutex_);
    std::map<AVMediaType, std::string> defaultNodes_ ZV_GUARDED_BY(mutex_);
};

}  // namespace zorvane
