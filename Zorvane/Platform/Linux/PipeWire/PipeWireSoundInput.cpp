#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundInput.hpp"

#include <poll.h>
#include <sys/eventfd.h>

#include <atomic>
#include <exception>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"
#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundTap.hpp"
#include "Zorvane/Platform/Linux/PipeWire/SignalMask.hpp"
#include "Zorvane/Platform/Linux/PipeWire/SoundIntake.hpp"

namespace zorvane {
namespace {

constexpr std::chrono::milliseconds silenceAfter{100};

}  // namespace

/// The node while there is a connection, and the thread that empties the ring.
class PipeWireSoundInput::State final : public PipeWireClient {
  public:
    State(Settings settings, std::shared_ptr<AVAudioConverting> converting, Sink sink)
        : settings_(std::move(settings)),
          converting_(std::move(converting)),
          feed_(settings_.channelCount.value_or(settings_.output.channelCount)),
          intake_(feed_.channelCount, settings_.output, *converting_, std::move(sink)) {}

    std::uint32_t channelCount() const { return settings_.output.channelCount; }

    void start() {
        thread_ = std::thread([this] {
            blockAllSignals();
            setCurrentThreadName("zv.sound");
            run();
        });
    }

    void stop() {
        isEnding_ = true;
        eventfd_write(feed_.wakeUp.get(), 1);
        if (thread_.joinable()) {
            const PoolBlockingScope blocking;  // the thread's last sample may wait for a job of the pool
            thread_.join();
        }
    }

    void connected(pw_core& core) override {
        try {
            tap_.emplace(core, settings_.name, feed_);
        } catch (const NSError& error) {
            Logger::forFile().error("Sound can't be captured", [&] { return LogMetadata{{"error", error.what()}}; });
        }
    }

    void disconnected() override { tap_.reset(); }

    void setSources(const PipeWireSoundSources& sources) {
        if (!tap_) {
            return;
        }
        {
            const MutexLock lock(mutex_);
            distance_ = sources.distance;
        }
        tap_->setWires(sources.wires, sources.distance.side);
    }

  private:
    void run() {
        const bool fills = settings_.idle == Idle::silence;
        if (fills) {
            fillUntil(clock_->now());
        }
        while (!isEnding_) {
            pollfd wakeUp{.fd = feed_.wakeUp.get(), .events = POLLIN, .revents = 0};
            poll(&wakeUp, 1, fills ? static_cast<int>(silenceAfter.count()) : -1);
            eventfd_t count = 0;
            eventfd_read(feed_.wakeUp.get(), &count);
            takeAll();
            if (fills && !isEnding_) {
                fillUntil(clock_->now() - silenceAfter);
            }
        }
    }

    void takeAll() {
        while (const SoundCycle* cycle = isEnding_ ? nullptr : feed_.ring.front()) {
            reportingErrors([&] { intake_.take(*cycle, feed_.ring.frontFrames(), distance()); });
            feed_.ring.pop();
        }
        reportLoss();
    }

    void fillUntil(std::chrono::nanoseconds time) {
        reportingErrors([&] { intake_.fillUntil(time); });
    }

    /// Once; a format that can't be converted fails in every cycle.
    template <class Work>
    void reportingErrors(const Work& work) {
        try {
            work();
        } catch (const std::exception& error) {
            if (!std::exchange(hasReportedError_, true)) {
                Logger::forFile().error("Sound can't be captured", [&] {
                    return LogMetadata{{"error", error.what()}};
                });
            }
        }
    }

    void reportLoss() {
        if (const auto lost = feed_.lostCycles.exchange(0, std::memory_order_relaxed); lost > 0) {
            Logger::forFile().warning("Sound got lost, because it wasn't taken for a second", [&] {
                return LogMetadata{{"cycles", std::to_string(lost)}};
            });
        }
    }

    PipeWireSoundDistance distance() {
        const MutexLock lock(mutex_);
        return distance_;
    }

    const Settings settings_;
    const std::shared_ptr<AVAudioConverting> converting_;
    SoundFeed feed_;
    std::optional<PipeWireSoundTap> tap_;  // the session's thread's
    SoundIntake intake_;                   // the sound thread's
    bool hasReportedError_ = false;        // likewise
    const std::shared_ptr<MonotonicClock> clock_ = MonotonicClock::shared();
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
    Mutex mutex_;
    PipeWireSoundDistance distance_ ZV_GUARDED_BY(mutex_);
};

PipeWireSoundInput::PipeWireSoundInput(std::shared_ptr<PipeWireSession> session, Settings settings,
                                       std::shared_ptr<AVAudioConverting> converting, Sink sink)
    : session_(std::move(session)),
      state_(std::make_shared<State>(std::move(settings), std::move(converting), std::move(sink))) {}

PipeWireSoundInput::~PipeWireSoundInput() {
    stop();
}

std::uint32_t PipeWireSoundInput::channelCount() const {
    return state_->channelCount();
}

void PipeWireSoundInput::start() {
    state_->start();
    session_->add(state_);
}

void PipeWireSoundInput::stop() {
    session_->remove(state_);
    state_->stop();
}

void PipeWireSoundInput::setSources(const PipeWireSoundSources& sources) {
    state_->setSources(sources);
}

}  // namespace zorvane
