// The side of an observed object: whom to tell, and the tokens.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "Zorvane/Platform/Foundation/NSKeyValueObservation.hpp"

namespace zorvane {

/// The observers of one property. A token may outlive the object. Any thread.
template <class... Arguments>
class NSKeyValueObservers {
  public:
    using Handler = std::function<void(Arguments...)>;

    /// Observes for as long as the token is kept.
    NSKeyValueObservation add(Handler handler) {
        auto held = std::make_shared<const Handler>(std::move(handler));
        {
            std::lock_guard lock(mutex_);
            std::erase_if(handlers_, [](const auto& known) { return known.expired(); });
            handlers_.push_back(held);
        }
        return NSKeyValueObservation([held = std::move(held)] {});
    }

    /// Calls every observer, on this thread and without a lock.
    void notify(const Arguments&... arguments) const {
        std::unique_lock lock(mutex_);
        const auto handlers = handlers_;
        lock.unlock();
        for (const auto& handler : handlers) {
            if (const auto live = handler.lock()) {
                (*live)(arguments...);
            }
        }
    }

  private:
    mutable std::mutex mutex_;
    std::vector<std::weak_ptr<const Handler>> handlers_;  // guarded by mutex_; the tokens own them
};

}  // namespace zorvane
