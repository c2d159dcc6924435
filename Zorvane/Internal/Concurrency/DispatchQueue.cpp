#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/ThreadName.hpp"

namespace zorvane {

constinit thread_local const DispatchQueue::Stay* DispatchQueue::Stay::innermost_ = nullptr;

// One word tells who is on the queue, so that an uncontended block enters and leaves with one atomic step each. Blocks
// that can't enter at once line up in `line_`; while it holds any, `someoneInLine` keeps newcomers from overtaking
// them, and whoever leaves last admits the next.
class DispatchQueue::Core : public std::enable_shared_from_this<Core> {
  public:
    Core(std::string label, Access plain) : label_(std::move(label)), plain_(plain) {}

    const std::string& label() const { return label_; }

    /// What `access` amounts to on this queue: on a serial one every block is exclusive.
    Access effective(Access access) const { return plain_ == Access::exclusive ? Access::exclusive : access; }

    void enter(Access access) {
        if (!tryEnter(access)) {
            enterInLine(access);
        }
    }

    void leave(Access access) {
        const std::uint64_t share = shareOf(access);
        const std::uint64_t left = state_.fetch_sub(share, std::memory_order_acq_rel) - share;
        if (left == someoneInLine) {
            std::lock_guard lock(mutex_);
            admit();
        }
    }

    void enqueue(std::unique_ptr<Job> job, Access access) {
        std::lock_guard lock(mutex_);
        lineUp({access, nullptr, std::move(job), Activity()});
    }

  private:
    struct Waiter {
        std::condition_variable admission;
        bool admitted = false;
    };

    struct Entry {
        Access access;
        Waiter* waiter;            // of a synchronous block, on the stack of its thread
        std::unique_ptr<Job> job;  // of an asynchronous one
        Activity activity;
    };

    static constexpr std::uint64_t someoneInLine = 1;
    static constexpr std::uint64_t exclusive = 2;
    static constexpr std::uint64_t oneShared = 4;
    static constexpr int triesBeforeLine = 64;

    static std::uint64_t shareOf(Access access) { return access == Access::exclusive ? exclusive : oneShared; }

    static bool admits(std::uint64_t state, Access access) {
        return access == Access::exclusive ? state < exclusive : (state & exclusive) == 0;
    }

    // Blocks are short: a few tries often save a thread the way through the scheduler.
    bool tryEnter(Access access) {
        for (int attempt = 0; attempt < triesBeforeLine; ++attempt) {
            std::uint64_t state = state_.load(std::memory_order_relaxed);
            if (state & someoneInLine) {
                return false;
            }
            if (admits(state, access) &&
                state_.compare_exchange_weak(state, state + shareOf(access), std::memory_order_acquire)) {
                return true;
            }
        }
        return false;
    }

    void enterInLine(Access access) {
        PoolBlockingScope blocking;
        Waiter waiter;
        std::unique_lock lock(mutex_);
        lineUp({access, &waiter, nullptr, Activity()});
        waiter.admission.wait(lock, [&waiter] { return waiter.admitted; });
    }

    // The three below are called with the mutex held.

    void lineUp(Entry entry) {
        line_.push_back(std::move(entry));
        state_.fetch_or(someoneInLine, std::memory_order_acq_rel);
        admit();
    }

    // While someone is in line, blocks only leave, except through here. If a block leaves after this has found no room,
    // it sees the mark and calls this again.
    void admit() {
        while (!line_.empty() && admits(state_.load(std::memory_order_acquire), line_.front().access)) {
            state_.fetch_add(shareOf(line_.front().access), std::memory_order_acq_rel);
            Entry entry = std::move(line_.front());
            line_.pop_front();
            start(std::move(entry));
        }
        if (line_.empty()) {
            state_.fetch_and(~someoneInLine, std::memory_order_acq_rel);
        }
    }

    void start(Entry entry) {
        if (entry.waiter) {
            entry.waiter->admitted = true;
            entry.waiter->admission.notify_one();
            return;
        }
        auto run = [core = shared_from_this(), job = std::shared_ptr<Job>(std::move(entry.job)),
                    access = entry.access]() mutable {
            {
                ThreadNameScope name(core->label_);
                Stay stay(*core);
                job->run();
                job.reset();  // still on the queue, as the block's captures may rely on it
            }
            core->leave(access);
        };
        Executor::pool()->post(std::move(run));
    }

    const std::string label_;
    const Access plain_;
    std::atomic<std::uint64_t> state_ = 0;
    std::mutex mutex_;  // guards the line
    std::deque<Entry> line_;
};

namespace {

[[noreturn]] void failPrecondition(const std::string& label, const char* what) {
    std::fprintf(stderr, "zorvane: precondition failed on queue \"%s\": %s\n", label.c_str(), what);
    std::abort();
}

}  // namespace

DispatchQueue DispatchQueue::serial(std::string label) {
    return DispatchQueue(std::make_shared<Core>(std::move(label), Access::exclusive));
}

DispatchQueue DispatchQueue::concurrent(std::string label) {
    return DispatchQueue(std::make_shared<Core>(std::move(label), Access::shared));
}

const std::string& DispatchQueue::label() const {
    return core_->label();
}

bool DispatchQueue::isCurrent() const {
    return Stay::contains(*core_);
}

void DispatchQueue::preconditionNotOnQueue() const {
    if (isCurrent()) {
        failPrecondition(label(), "the calling thread is on it already");
    }
}

void DispatchQueue::preconditionOnQueue() const {
    if (!isCurrent()) {
        failPrecondition(label(), "the calling thread is not on it");
    }
}

void DispatchQueue::enqueue(std::unique_ptr<Job> job, Access access) const {
    core_->enqueue(std::move(job), core_->effective(access));
}

DispatchQueue::Stay::Stay(const Core& core) noexcept : core_(core), outer_(std::exchange(innermost_, this)) {}

DispatchQueue::Stay::~Stay() {
    innermost_ = outer_;
}

bool DispatchQueue::Stay::contains(const Core& core) noexcept {
    for (const Stay* stay = innermost_; stay; stay = stay->outer_) {
        if (&stay->core_ == &core) {
            return true;
        }
    }
    return false;
}

DispatchQueue::SyncScope::SyncScope(Core& core, Access access)
    : core_(core), access_(enterOnce(core, access)), stay_(core) {}

DispatchQueue::Access DispatchQueue::SyncScope::enterOnce(Core& core, Access access) {
    if (Stay::contains(core)) {
        failPrecondition(core.label(), "a synchronous block would wait for the block that encloses it");
    }
    const Access effective = core.effective(access);
    core.enter(effective);
    return effective;
}

DispatchQueue::SyncScope::~SyncScope() {
    core_.leave(access_);
}

}  // namespace zorvane
