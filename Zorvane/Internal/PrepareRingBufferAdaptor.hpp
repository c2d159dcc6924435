// Holds the samples that come before the recording starts, and lets a task wait for the first one.
#pragma once

#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <utility>

#include "Zorvane/Internal/Concurrency/Continuation.hpp"
#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/RingBuffer.hpp"
#include "Zorvane/Internal/WithTimeout.hpp"

namespace zorvane {

/// A ring buffer with a waiting room. Capture callbacks append on their queue; the task that prepares waits until the
/// source has delivered; the recording opens with what is held. Any thread. With nobody waiting, appending allocates
/// nothing.
template <class T>
class PrepareRingBufferAdaptor {
  public:
    explicit PrepareRingBufferAdaptor(RingBuffer<T> buffer) : state_(std::make_shared<State>(std::move(buffer))) {}

    /// Keeps the item, and resumes all waiting tasks with it.
    void append(const T& item) { state_->append(item); }

    /// Lets go of all items. Tasks that wait go on waiting.
    void clear() {
        state_->queue.syncBarrier([this] { state_->ringBuffer.clear(); });
    }

    /// A copy of the ring, to be replayed. Copying an empty one allocates nothing.
    RingBuffer<T> buffer() const {
        return state_->queue.sync([this] { return state_->ringBuffer; });
    }

    /// Gives the newest item held, or else the first to come, and leaves it in the ring. Throws `error`, which is not
    /// null, after `timeout` seconds without one. The adaptor may go meanwhile.
    Task<T> waitForItem(double timeout, std::exception_ptr error) const {
        auto body = [state = state_] { return wait(state); };
        return withTimeout(timeout, std::move(error), std::move(body));
    }

  private:
    using WaiterID = std::uint64_t;

    struct State {
        explicit State(RingBuffer<T> buffer) : ringBuffer(std::move(buffer)) {}

        void append(const T& item) {
            queue.syncBarrier([&] {
                ringBuffer.append(item);
                for (const auto& [id, continuation] : continuations) {
                    continuation.resume(item);
                }
                continuations.clear();
            });
        }

        // In one block, so that no item can slip in between the look at the ring and the wait.
        WaiterID addWaiter(Continuation<T> continuation) {
            return queue.syncBarrier([&] {
                const WaiterID id = ++lastID;
                if (auto last = ringBuffer.last()) {
                    continuation.resume(std::move(*last));
                } else {
                    continuations.emplace(id, std::move(continuation));
                }
                return id;
            });
        }

        void cancelWaiter(WaiterID id) {
            queue.syncBarrier([&] {
                const auto waiting = continuations.find(id);
                if (waiting != continuations.end()) {
                    waiting->second.resumeThrowing(ZVCancelled());
                    continuations.erase(waiting);
                }
            });
        }

        const DispatchQueue queue = DispatchQueue::concurrent("PrepareRingBufferAdaptorQueue");
        RingBuffer<T> ringBuffer;  // changed by barrier blocks of queue only, as all below
        std::map<WaiterID, Continuation<T>> continuations;
        WaiterID lastID = 0;
    };

    static Task<T> wait(std::shared_ptr<State> state) {
        auto [continuation, waiter] = makeContinuation<T>();
        const WaiterID id = state->addWaiter(std::move(continuation));
        waiter.onCancel([state, id] { state->cancelWaiter(id); });
        co_return co_await std::move(waiter);
    }

    std::shared_ptr<State> state_;
};

}  // namespace zorvane
