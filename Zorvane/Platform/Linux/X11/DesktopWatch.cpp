#include "Zorvane/Platform/Linux/X11/DesktopWatch.hpp"

#include <poll.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/X11/Alarm.hpp"
#include "Zorvane/Platform/Linux/X11/BrokenPipeSignal.hpp"
#include "Zorvane/Platform/Linux/X11/XAnswerLimit.hpp"

namespace zorvane {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds shortestPause(100);
constexpr milliseconds longestPause(2000);
constexpr DesktopChanges everything{.displays = true, .activeWindow = true, .applications = true, .windows = true};

bool contains(const DesktopChanges& changes, DesktopAspect aspect) {
    switch (aspect) {
        case DesktopAspect::displays:
            return changes.displays;
        case DesktopAspect::activeWindow:
            return changes.activeWindow;
        case DesktopAspect::applications:
            return changes.applications;
        case DesktopAspect::windows:
            return changes.windows;
    }
    return false;
}

}  // namespace

class DesktopWatch::Core {
  public:
    void run();
    void end();
    std::shared_ptr<const DesktopState> state();
    std::optional<std::uint64_t> displaysRevision();
    std::uint64_t add(DesktopAspect aspect, std::function<void()> handler);
    void remove(std::uint64_t observer);

  private:
    struct Observer {
        std::uint64_t number;
        DesktopAspect aspect;
        std::shared_ptr<std::function<void()>> handler;
    };

    std::shared_ptr<XConnection> connect();
    bool adopt(const std::shared_ptr<XConnection>& connection);
    void serve(const std::shared_ptr<XConnection>& connection);
    void sleep(int descriptor, milliseconds limit);
    void note(const DesktopChanges& changes) ZV_REQUIRES(mutex_);
    void takeEvents() ZV_REQUIRES(mutex_);
    void refresh() ZV_REQUIRES(mutex_);
    void tellObservers();
    bool isEnding();

    Alarm alarm_;
    Mutex mutex_;
    std::condition_variable_any attempted_;
    bool hasAttempted_ ZV_GUARDED_BY(mutex_) = false;
    bool isEnding_ ZV_GUARDED_BY(mutex_) = false;
    std::shared_ptr<XConnection> connection_ ZV_GUARDED_BY(mutex_);  // to be cut at the end
    std::unique_ptr<DesktopModel> model_ ZV_GUARDED_BY(mutex_);      // none without a server
    DesktopChanges untold_ ZV_GUARDED_BY(mutex_);
    std::uint64_t displaysRevision_ ZV_GUARDED_BY(mutex_) = 0;
    std::vector<Observer> observers_ ZV_GUARDED_BY(mutex_);
    std::uint64_t lastObserver_ ZV_GUARDED_BY(mutex_) = 0;
    XConnection::Opening opening_;  // touched on the thread only
};

void DesktopWatch::Core::run() {
    setCurrentThreadName("zv.desktop");
    blockBrokenPipeSignal();
    for (milliseconds pause = shortestPause; !isEnding(); pause = std::min(2 * pause, longestPause)) {
        if (const auto connection = connect(); connection && adopt(connection)) {
            pause = shortestPause;
            serve(connection);
        }
        {
            const MutexLock lock(mutex_);
            hasAttempted_ = true;
        }
        attempted_.notify_all();
        sleep(alarm_.descriptor(), pause);
    }
}

/// A connection that takes longer is waited for again the next time.
std::shared_ptr<XConnection> DesktopWatch::Core::connect() {
    constexpr milliseconds slice(50);  // a future can't be waited for together with an alarm
    if (!opening_.valid()) {
        opening_ = XConnection::beginOpening();
    }
    for (milliseconds waited{}; waited < longestXAnswer && !isEnding(); waited += slice) {
        if (opening_.wait_for(slice) == std::future_status::ready) {
            return std::exchange(opening_, {}).get();
        }
    }
    return nullptr;
}

/// Whether the server answered. What has changed before, nobody knows.
bool DesktopWatch::Core::adopt(const std::shared_ptr<XConnection>& connection) {
    {
        const MutexLock lock(mutex_);
        connection_ = connection;
        if (isEnding_) {
            return false;
        }
    }
    const XAnswerLimit limit(connection);
    auto model = std::make_unique<DesktopModel>(connection);
    const MutexLock lock(mutex_);
    if (!connection->isAlive()) {
        return false;
    }
    model_ = std::move(model);
    note(everything);
    hasAttempted_ = true;
    attempted_.notify_all();
    return true;
}

void DesktopWatch::Core::serve(const std::shared_ptr<XConnection>& connection) {
    for (bool isConnected = true; isConnected;) {
        tellObservers();
        sleep(xcb_get_file_descriptor(connection->get()), milliseconds(-1));
        const MutexLock lock(mutex_);
        if (isEnding_) {
            return;
        }
        if (model_) {
            note(model_->takeEvents());
        }
        isConnected = model_ && connection->isAlive();
        if (!isConnected) {
            model_ = nullptr;
            note(everything);
        }
    }
    tellObservers();
}

/// Until the alarm rings, or something arrives.
void DesktopWatch::Core::sleep(int descriptor, milliseconds limit) {
    std::array<pollfd, 2> sources{pollfd{.fd = alarm_.descriptor(), .events = POLLIN, .revents = 0},
                                  pollfd{.fd = descriptor, .events = POLLIN, .revents = 0}};
    poll(sources.data(), sources.size(), static_cast<int>(limit.count()));
    alarm_.silence();
}

std::shared_ptr<const DesktopState> DesktopWatch::Core::state() {
    // Never destroyed: threads may ask while the process exits.
    static const auto& nothing = *new std::shared_ptr<const DesktopState>(std::make_shared<const DesktopState>());
    MutexLock lock(mutex_);
    while (!hasAttempted_) {
        const PoolBlockingScope blocking;
        attempted_.wait(lock);
    }
    if (model_) {
        takeEvents();
    }
    if (model_ && model_->isOutdated()) {
        refresh();
    }
    return model_ ? model_->state() : nothing;
}

std::optional<std::uint64_t> DesktopWatch::Core::displaysRevision() {
    const MutexLock lock(mutex_);
    if (!model_) {
        return std::nullopt;
    }
    takeEvents();
    return model_->connection()->isAlive() ? std::optional(displaysRevision_) : std::nullopt;
}

void DesktopWatch::Core::note(const DesktopChanges& changes) {
    untold_ |= changes;
    displaysRevision_ += changes.displays ? 1 : 0;
}

/// Not on the thread, which is to tell of what the events say.
void DesktopWatch::Core::takeEvents() {
    note(model_->takeEvents());
    if (untold_.any()) {
        alarm_.ring();
    }
}

/// The answers bring further events in, which lie in XCB's queue then and don't wake the thread.
void DesktopWatch::Core::refresh() {
    const PoolBlockingScope blocking;
    const BrokenPipeScope brokenPipe;
    const auto connection = model_->connection();
    const XAnswerLimit limit(connection);
    model_->refresh();
    takeEvents();
    if (!connection->isAlive()) {
        model_ = nullptr;
        alarm_.ring();
    }
}

void DesktopWatch::Core::tellObservers() {
    DesktopChanges changes;
    std::vector<std::pair<DesktopAspect, std::weak_ptr<std::function<void()>>>> observers;
    {
        const MutexLock lock(mutex_);
        changes = std::exchange(untold_, {});
        for (const Observer& observer : observers_) {
            observers.emplace_back(observer.aspect, observer.handler);
        }
    }
    for (const auto& [aspect, handler] : observers) {
        if (const auto live = handler.lock(); live && contains(changes, aspect)) {
            (*live)();
        }
    }
}

std::uint64_t DesktopWatch::Core::add(DesktopAspect aspect, std::function<void()> handler) {
    const MutexLock lock(mutex_);
    observers_.push_back({++lastObserver_, aspect, std::make_shared<std::function<void()>>(std::move(handler))});
    return lastObserver_;
}

void DesktopWatch::Core::remove(std::uint64_t observer) {
    std::vector<Observer> removed;  // goes without the mutex, since what a handler holds may call back
    const MutexLock lock(mutex_);
    const auto rest = std::stable_partition(observers_.begin(), observers_.end(),
                                            [&](const Observer& each) { return each.number != observer; });
    std::move(rest, observers_.end(), std::back_inserter(removed));
    observers_.erase(rest, observers_.end());
}

bool DesktopWatch::Core::isEnding() {
    const MutexLock lock(mutex_);
    return isEnding_;
}

void DesktopWatch::Core::end() {
    const MutexLock lock(mutex_);
    isEnding_ = true;
    if (connection_) {
        connection_->hangUp();
    }
    alarm_.ring();
}

DesktopWatch::DesktopWatch() : core_(std::make_shared<Core>()) {}

DesktopWatch::~DesktopWatch() {
    core_->end();
    if (thread_.get_id() == std::this_thread::get_id()) {
        thread_.detach();
    } else if (thread_.joinable()) {
        thread_.join();
    }
}

void DesktopWatch::start() {
    std::call_once(started_, [this] { thread_ = std::thread([core = core_] { core->run(); }); });
}

std::shared_ptr<const DesktopState> DesktopWatch::state() {
    start();
    return core_->state();
}

std::optional<std::uint64_t> DesktopWatch::displaysRevision() {
    start();
    return core_->displaysRevision();
}

NSKeyValueObservation DesktopWatch::observe(DesktopAspect aspect, std::function<void()> handler) {
    const std::uint64_t observer = core_->add(aspect, std::move(handler));
    start();
    return NSKeyValueObservation([core = std::weak_ptr(core_), observer] {
        if (const auto strong = core.lock()) {
            strong->remove(observer);
        }
    });
}

}  // namespace zorvane
