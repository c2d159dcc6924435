#include "Zorvane/Platform/Linux/PipeWire/PipeWireLoop.hpp"

#include <cerrno>
#include <mutex>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireConnection.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireHandles.hpp"
#include "Zorvane/Platform/Linux/PipeWire/SignalMask.hpp"

namespace zorvane {
namespace {

using LoopOwner = std::unique_ptr<pw_loop, void (*)(pw_loop*)>;

LoopOwner makeLoop() {
    static std::once_flag once;
    std::call_once(once, [] { pw_init(nullptr, nullptr); });
    LoopOwner loop(pw_loop_new(nullptr), pw_loop_destroy);
    if (!loop) {
        throw NSError::posix(errno, "make a loop of PipeWire");
    }
    return loop;
}

}  // namespace

/// The loop and the blocks for it. Shared, so that it outlives its owner where the thread has to.
class PipeWireLoop::Mailbox {
  public:
    using Block = std::function<void(PipeWireConnection&)>;

    Mailbox() : loop_(makeLoop()), wakeUp_(spa_loop_utils_add_event(loop_->utils, onWakeUp, this), {loop_.get()}) {
        if (!wakeUp_) {
            throw NSError::posix(errno, "make an event of PipeWire's loop");
        }
    }
    Mailbox(const Mailbox&) = delete;
    Mailbox& operator=(const Mailbox&) = delete;

    void run(const MakeConnection& makeConnection) {
        connection_ = makeConnection(*loop_);
        pw_loop_enter(loop_.get());
        while (!isEnding()) {
            pw_loop_iterate(loop_.get(), -1);
        }
        connection_.reset();
        pw_loop_leave(loop_.get());
    }

    void post(Block block) {
        {
            const MutexLock lock(mutex_);
            blocks_.push_back(std::move(block));
        }
        spa_loop_utils_signal_event(loop_->utils, wakeUp_.get());
    }

    void end() {
        std::vector<Block> dropped;
        {
            const MutexLock lock(mutex_);
            isEnding_ = true;
            dropped.swap(blocks_);
        }
        spa_loop_utils_signal_event(loop_->utils, wakeUp_.get());
    }

  private:
    static void onWakeUp(void* data, std::uint64_t) { static_cast<Mailbox*>(data)->runBlocks(); }

    void runBlocks() {
        std::vector<Block> blocks;
        {
            const MutexLock lock(mutex_);
            blocks.swap(blocks_);
        }
        for (const auto& block : blocks) {
            if (!isEnding()) {
                block(*connection_);
            }
        }
    }

    bool isEnding() {
        const MutexLock lock(mutex_);
        return isEnding_;
    }

    const LoopOwner loop_;
    const PipeWireLoopSource wakeUp_;
    std::shared_ptr<PipeWireConnection> connection_;  // the thread's own
    Mutex mutex_;
    std::vector<Block> blocks_ ZV_GUARDED_BY(mutex_);
    bool isEnding_ ZV_GUARDED_BY(mutex_) = false;
};

PipeWireLoop::PipeWireLoop(MakeConnection makeConnection) : mailbox_(std::make_shared<Mailbox>()) {
    thread_ = std::thread([mailbox = mailbox_, makeConnection = std::move(makeConnection)] {
        blockAllSignals();  // on the threads that PipeWire starts from this one too
        setCurrentThreadName("zv.pipewire");
        mailbox->run(makeConnection);
    });
}

PipeWireLoop::~PipeWireLoop() {
    mailbox_->end();
    if (thread_.get_id() == std::this_thread::get_id()) {
        thread_.detach();
    } else {
        thread_.join();
    }
}

void PipeWireLoop::async(std::function<void(PipeWireConnection& connection)> block) {
    mailbox_->post(std::move(block));
}

}  // namespace zorvane
