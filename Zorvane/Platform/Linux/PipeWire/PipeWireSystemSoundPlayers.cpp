#include "Zorvane/Platform/Linux/PipeWire/PipeWireSystemSoundPlayers.hpp"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>
#include <utility>

#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"
#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundGraph.hpp"

namespace zorvane {
namespace {

constexpr std::chrono::seconds longestAnswer{2};

using Players = std::vector<PipeWireSystemSoundPlayer>;

Players playersIn(const PipeWireSoundScene& scene) {
    Players players;
    for (const PipeWireSoundNode& node : scene.nodes) {
        const auto processID = static_cast<std::int32_t>(node.processID);
        const bool isKnown = std::ranges::count(players, processID, &PipeWireSystemSoundPlayer::processID) > 0;
        if (node.mediaClass == "Stream/Output/Audio" && processID > 0 && !isKnown) {
            players.push_back({.processID = processID,
                               .applicationName = textValue(node.properties, "application.name"),
                               .program = textValue(node.properties, "application.process.binary")});
        }
    }
    return players;
}

}  // namespace

class PipeWireSystemSoundPlayers::State : public std::enable_shared_from_this<State> {
  public:
    explicit State(std::shared_ptr<PipeWireSession> session) : session_(std::move(session)) {}

    void get(Handler handler) {
        std::call_once(started_, [this] { follow(); });
        MutexLock lock(mutex_);
        if (!players_) {
            waiting_.push_back(std::move(handler));
            return;
        }
        Players players = *players_;
        lock.unlock();
        handler(std::move(players));
    }

    void end() {
        if (graph_) {
            session_->remove(graph_);
        }
        update({});
    }

  private:
    void follow() {
        graph_ = std::make_shared<PipeWireSoundGraph>([weak = weak_from_this()](const PipeWireSoundScene& scene) {
            if (const auto self = weak.lock()) {
                self->update(playersIn(scene));
            }
        });
        session_->add(graph_);
        clock_->schedule(clock_->now() + longestAnswer, longestAnswer / 10, [weak = weak_from_this()] {
            if (const auto self = weak.lock(); self && !self->isKnown()) {
                self->update({});
            }
        });
    }

    bool isKnown() {
        const MutexLock lock(mutex_);
        return players_.has_value();
    }

    void update(Players players) {
        std::vector<Handler> answered;
        {
            const MutexLock lock(mutex_);
            players_ = players;
            answered.swap(waiting_);
        }
        for (const Handler& handler : answered) {
            handler(players);
        }
    }

    const std::shared_ptr<HostClock> clock_ = MonotonicClock::shared();
    const std::shared_ptr<PipeWireSession> session_;
    std::once_flag started_;
    std::shared_ptr<PipeWireSoundGraph> graph_;  // set once
    Mutex mutex_;
    std::optional<Players> players_ ZV_GUARDED_BY(mutex_);  // nothing until they are known
    std::vector<Handler> waiting_ ZV_GUARDED_BY(mutex_);
};

PipeWireSystemSoundPlayers::PipeWireSystemSoundPlayers(std::shared_ptr<PipeWireSession> session)
    : state_(std::make_shared<State>(std::move(session))) {}

PipeWireSystemSoundPlayers::~PipeWireSystemSoundPlayers() {
    state_->end();
}

void PipeWireSystemSoundPlayers::get(Handler handler) {
    state_->get(std::move(handler));
}

}  // namespace zorvane
