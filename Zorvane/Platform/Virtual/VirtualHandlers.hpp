// Who wants to hear of one kind of change.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "Zorvane/Platform/Foundation/NSKeyValueObservation.hpp"

namespace zorvane {

/// Handlers are called one at a time, in the order in which they were added, on the thread that tells of the change.
/// Any thread; a handler may add and remove.
template <class... Arguments>
class VirtualHandlers : public std::enable_shared_from_this<VirtualHandlers<Arguments...>> {
  public:
    using Handler = std::function<void(Arguments...)>;
    enum class ID : std::uint64_t {};

    ID add(Handler handler) {
        const std::lock_guard lock(mutex_);
        const ID id{++lastID_};
        handlers_.emplace(id, std::move(handler));
        return id;
    }

    /// When this returns no call is under way, unless this is one.
    void remove(ID id) {
        const std::lock_guard lock(mutex_);
        handlers_.erase(id);
    }

    /// Adds a handler until the token goes.
    NSKeyValueObservation observe(Handler handler) {
        const ID id = add(std::move(handler));
        return NSKeyValueObservation([self = this->shared_from_this(), id] { self->remove(id); });
    }

    void call(Arguments... arguments) {
        const std::lock_guard lock(mutex_);
        for (const ID id : ids()) {
            const auto entry = handlers_.find(id);
            if (entry != handlers_.end()) {
                const Handler handler = entry->second;  // it may remove itself
                handler(arguments...);
            }
        }
    }

    std::size_t size() const {
        const std::lock_guard lock(mutex_);
        return handlers_.size();
    }

  private:
    std::vector<ID> ids() const {
        std::vector<ID> ids;
        for (const auto& [id, handler] : handlers_) {
            ids.push_back(id);
        }
        return ids;
    }

    mutable std::recursive_mutex mutex_;  // guards all below; held during calls
    std::uint64_t lastID_ = 0;
    std::map<ID, Handler> handlers_;
};

}  // namespace zorvane
