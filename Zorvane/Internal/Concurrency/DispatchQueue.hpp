// Labelled queues that order blocks of work: the locks and the serial workers of the sample paths.
#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace zorvane {

/// Runs blocks of work in order of arrival, serially or with shared access.
///
/// - On a serial queue blocks run one at a time.
/// - On a concurrent queue plain blocks may run together; a barrier block waits for all blocks before it, runs alone
///   and holds up all blocks behind it.
///
/// A synchronous block runs on the calling thread, which waits for its turn; it returns what the block returns and
/// throws what it throws. An asynchronous one runs later on the pool, on a thread that bears the queue's label
/// meanwhile, and must not throw. Uncontended, a synchronous block takes no system call, no allocation and tens of
/// nanoseconds, so that each sample can afford several.
///
/// A block must not enter its own queue synchronously: it would wait for itself, and the process ends with a message
/// that names the queue. Waiting inside a block is for short work only; a block never awaits a task.
///
/// This is a handle: copies stand for the same queue, which lives until its asynchronous blocks have run. The caller of
/// a synchronous block keeps its handle until the block has ended. Any thread.
class DispatchQueue {
  public:
    static DispatchQueue serial(std::string label);
    static DispatchQueue concurrent(std::string label);

    const std::string& label() const;

    template <class Block>
    std::invoke_result_t<Block> sync(Block&& block) const {
        SyncScope scope(*core_, Access::shared);
        return std::forward<Block>(block)();
    }

    template <class Block>
    std::invoke_result_t<Block> syncBarrier(Block&& block) const {
        SyncScope scope(*core_, Access::exclusive);
        return std::forward<Block>(block)();
    }

    template <class Block>
    void async(Block&& block) const {
        enqueue(std::make_unique<JobOf<std::decay_t<Block>>>(std::forward<Block>(block)), Access::shared);
    }

    template <class Block>
    void asyncBarrier(Block&& block) const {
        enqueue(std::make_unique<JobOf<std::decay_t<Block>>>(std::forward<Block>(block)), Access::exclusive);
    }

    /// True if the calling thread is inside a block of this queue.
    bool isCurrent() const;

    /// Ends the process with a message if the calling thread is, or is not, inside a block of this queue.
    void preconditionNotOnQueue() const;
    void preconditionOnQueue() const;

  private:
    class Core;
    enum class Access { shared, exclusive };

    struct Job {
        virtual ~Job() = default;
        virtual void run() = 0;
    };

    template <class Block>
    struct JobOf final : Job {
        explicit JobOf(Block b) : block(std::move(b)) {}
        void run() override { block(); }
        Block block;
    };

    /// A thread's stay on a queue; the thread's stays form a chain, by which it knows which queues it is on.
    class Stay {
      public:
        explicit Stay(const Core& core) noexcept;
        ~Stay();
        Stay(const Stay&) = delete;
        Stay& operator=(const Stay&) = delete;
        static bool contains(const Core& core) noexcept;

      private:
        static constinit thread_local const Stay* innermost_;
        const Core& core_;
        const Stay* outer_;
    };

    class SyncScope {
      public:
        SyncScope(Core& core, Access access);
        ~SyncScope();
        SyncScope(const SyncScope&) = delete;
        SyncScope& operator=(const SyncScope&) = delete;

      private:
        static Access enterOnce(Core& core, Access access);

        Core& core_;
        const Access access_;
        Stay stay_;
    };

    explicit DispatchQueue(std::shared_ptr<Core> core) : core_(std::move(core)) {}

    void enqueue(std::unique_ptr<Job> job, Access access) const;

    std::shared_ptr<Core> core_;
};

}  // namespace zorvane
