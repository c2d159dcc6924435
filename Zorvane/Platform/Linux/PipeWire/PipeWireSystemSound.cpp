#include "Zorvane/Platform/Linux/PipeWire/PipeWireSystemSound.hpp"

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundGraph.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundInput.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSystemSoundChannels.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSystemSoundWiring.hpp"
#include "Zorvane/Platform/Linux/System/ProcessLineage.hpp"

namespace zorvane {
namespace {

/// A service that listens and doesn't answer hangs.
constexpr std::chrono::seconds longestAnswer{3};

std::exception_ptr failure(std::string text) {
    return makeStreamError(SCStreamErrorCode::failedToStart, std::move(text));
}

std::exception_ptr notRunning() {
    return failure(
        "PipeWire isn't running, and the system's sound comes from it. Start it: "
        "systemctl --user start pipewire wireplumber");
}

std::exception_ptr hanging() {
    return failure("PipeWire doesn't answer. Start it anew: systemctl --user restart pipewire wireplumber");
}

std::exception_ptr stoppedEarly() {
    return failure("The stream was stopped while it started.");
}

}  // namespace

class PipeWireSystemSound::State : public std::enable_shared_from_this<State> {
  public:
    State(std::shared_ptr<PipeWireSession> session, std::shared_ptr<AVAudioConverting> converting, Settings settings,
          Handlers handlers)
        : session_(std::move(session)),
          availability_(std::move(handlers.availability)),
          wiring_(std::move(settings.audible),
                  [moment = processMoment()](std::int32_t process) { return processLineage(process, moment); }),
          input_(session_,
                 {.name = "system sound",
                  .output = settings.format,
                  .channelCount = static_cast<std::uint32_t>(systemSoundChannels.size()),
                  .idle = PipeWireSoundInput::Idle::silence},
                 std::move(converting), std::move(handlers.sample)) {}

    void start(Completion completion) {
        if (!begin(completion)) {
            completion(stoppedEarly());
            return;
        }
        session_->add(graph_);
        if (life() == Life::ended) {
            session_->remove(graph_);  // again, since the stop may have come before it was there
        }
    }

    void stop() {
        {
            const std::lock_guard lock(mutex_);
            if (std::exchange(life_, Life::ended) != Life::running) {
                return;
            }
        }
        input_.stop();
        session_->remove(graph_);
        finishStart(stoppedEarly());
    }

  private:
    enum class Life : std::uint8_t { made, running, ended };

    /// False if it was stopped before.
    bool begin(const Completion& completion) {
        const std::lock_guard lock(mutex_);
        if (life_ != Life::made) {
            return false;
        }
        life_ = Life::running;
        starting_ = completion;
        const auto weak = weak_from_this();
        timer_ = clock_->schedule(clock_->now() + longestAnswer, longestAnswer / 10, [weak] {
            if (const auto self = weak.lock()) {
                self->finishStart(hanging());
            }
        });
        graph_ = std::make_shared<PipeWireSoundGraph>([weak](const PipeWireSoundScene& scene) {
            if (const auto self = weak.lock()) {
                self->sceneChanged(scene);
            }
        });
        input_.start();
        return true;
    }

    Life life() {
        const std::lock_guard lock(mutex_);
        return life_;
    }

    void sceneChanged(const PipeWireSoundScene& scene) {
        if (scene.isConnected) {
            input_.setSources(wiring_.sourcesIn(scene));
        }
        if (!finishStart(scene.isConnected ? nullptr : notRunning())) {
            tellOf(scene.isConnected);
        }
    }

    /// False if the start had its end before.
    bool finishStart(std::exception_ptr error) {
        Completion starting;
        {
            const std::lock_guard lock(mutex_);
            starting = std::exchange(starting_, nullptr);
        }
        if (!starting) {
            return false;
        }
        clock_->cancel(timer_);
        starting(std::move(error));
        return true;
    }

    void tellOf(bool isConnected) {
        {
            const std::lock_guard lock(mutex_);
            if (life_ != Life::running || isConnected != isAway_) {
                return;
            }
            isAway_ = !isConnected;
        }
        availability_(isConnected ? nullptr : notRunning());
    }

    const std::shared_ptr<HostClock> clock_ = MonotonicClock::shared();
    const std::shared_ptr<PipeWireSession> session_;
    const std::function<void(std::exception_ptr)> availability_;
    PipeWireSystemSoundWiring wiring_;  // of the session's thread
    PipeWireSoundInput input_;
    std::shared_ptr<PipeWireSoundGraph> graph_;  // set at the start, before it runs

    std::mutex mutex_;  // guards what follows
    Life life_ = Life::made;
    bool isAway_ = false;
    Completion starting_;
    HostClock::TimerID timer_{};
};

PipeWireSystemSound::PipeWireSystemSound(std::shared_ptr<PipeWireSession> session,
                                         std::shared_ptr<AVAudioConverting> converting, Settings settings,
                                         Handlers handlers)
    : state_(std::make_shared<State>(std::move(session), std::move(converting), std::move(settings),
                                     std::move(handlers))) {}

PipeWireSystemSound::~PipeWireSystemSound() {
    stop();
}

void PipeWireSystemSound::start(Completion completion) {
    state_->start(std::move(completion));
}

void PipeWireSystemSound::stop() {
    state_->stop();
}

}  // namespace zorvane
