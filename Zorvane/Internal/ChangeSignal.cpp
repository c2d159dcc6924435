#include "Zorvane/Internal/ChangeSignal.hpp"

#include <map>
#include <utility>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"

namespace zorvane {

using Source = AsyncStreamSource<ChangeSignal::Change>;

struct ChangeSignal::Listeners {
    std::uint64_t add(const Source& source) {
        const MutexLock lock(mutex);
        sources.emplace(++lastID, source);
        return lastID;
    }
    void remove(std::uint64_t id) {
        const MutexLock lock(mutex);
        sources.erase(id);
    }
    std::map<std::uint64_t, Source> all() {
        const MutexLock lock(mutex);
        return sources;
    }

    Mutex mutex;
    std::uint64_t lastID ZV_GUARDED_BY(mutex) = 0;
    std::map<std::uint64_t, Source> sources ZV_GUARDED_BY(mutex);
};

ChangeSignal::ChangeSignal() : listeners_(std::make_shared<Listeners>()) {}

ChangeSignal::~ChangeSignal() = default;

AsyncStream<ChangeSignal::Change> ChangeSignal::changes() {
    auto [stream, source] = AsyncStream<Change>::make(StreamBuffering::newest(1));
    const std::uint64_t id = listeners_->add(source);
    source.onTermination([weak = std::weak_ptr(listeners_), id] {
        if (const auto listeners = weak.lock()) {
            listeners->remove(id);
        }
    });
    return std::move(stream);
}

void ChangeSignal::send() {
    for (const auto& [id, source] : listeners_->all()) {
        source.yield({});
    }
}

}  // namespace zorvane
