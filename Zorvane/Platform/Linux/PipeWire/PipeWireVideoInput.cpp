#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoInput.hpp"

#include <ctime>
#include <thread>
#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWirePictureIntake.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/SignalMask.hpp"

namespace zorvane {
namespace {

constexpr timespec betweenTries{.tv_sec = 2, .tv_nsec = 0};
constexpr timespec longestTry{.tv_sec = 10, .tv_nsec = 0};  // some cameras need seconds for their first picture

}  // namespace

/// The node while there is a connection and a source, and the thread that empties the exchange.
class PipeWireVideoInput::State final : public PipeWireClient {
  public:
    State(std::string name, std::shared_ptr<AVVideoConverting> converting, Sink sink)
        : name_(std::move(name)), converting_(std::move(converting)), sink_(std::move(sink)), intake_(*converting_) {}

    void start(FlowHandler flowChanged) {
        flowChanged_ = std::move(flowChanged);
        thread_ = std::thread([this] {
            blockAllSignals();
            setCurrentThreadName("zv.camera");
            run();
        });
    }

    void stop() {
        exchange_.end();
        if (thread_.joinable()) {
            const PoolBlockingScope blocking;  // the thread's last sample may wait for a job of the pool
            thread_.join();
        }
    }

    void connected(pw_core& core) override {
        core_ = &core;
        pw_loop* loop = pw_context_get_main_loop(pw_core_get_context(core_));
        const auto onTimer = [](void* self, std::uint64_t) { static_cast<State*>(self)->restart(); };
        retry_ = {spa_loop_utils_add_timer(loop->utils, onTimer, this), {loop}};
    }

    void disconnected() override {
        retry_.reset();
        tap_.reset();
        source_.reset();
        isFailing_ = false;
        core_ = nullptr;
    }

    void setSource(const std::optional<PipeWireVideoSource>& source) {
        if (core_ && source != source_) {
            source_ = source;
            restart();
        }
    }

    void sourceFailed(const std::string& reason) {
        if (tap_) {
            changeFlow(reason);
        }
    }

  private:
    void restart() {
        tap_.reset();
        isFailing_ = isFailing_ && source_;
        setRetry(isFailing_ ? longestTry : timespec{});  // a camera that has failed doesn't say so each time
        if (!source_) {
            return;
        }
        try {
            const auto flowChanged = [this](const std::optional<std::string>& failure) { changeFlow(failure); };
            tap_.emplace(*core_, name_, *source_, exchange_, flowChanged);
        } catch (const NSError& error) {
            changeFlow(error.localizedDescription());
        }
    }

    void changeFlow(const std::optional<std::string>& failure) {
        isFailing_ = failure.has_value();
        setRetry(isFailing_ ? betweenTries : timespec{});
        flowChanged_(failure);
    }

    /// No time: not at all.
    void setRetry(timespec pause) {
        spa_loop_utils_update_timer(retry_.get_deleter().loop->utils, retry_.get(), &pause, nullptr, false);
    }

    void run() {
        while (const auto picture = exchange_.take()) {
            const CMSampleBuffer sample = convert(*picture);
            exchange_.finish();
            intake_.reportDrops(exchange_.takeDropCount());
            if (sample.isValid()) {
                sink_(sample);
            }
        }
    }

    CMSampleBuffer convert(const PipeWirePicture& picture) {
        picture.memory->beginReading();
        CMSampleBuffer sample =
            intake_.take(picture.memory->pieces(), picture.memory->count(), picture.format, picture.time);
        picture.memory->endReading();
        return sample;
    }

    const std::string name_;
    const std::shared_ptr<AVVideoConverting> converting_;
    const Sink sink_;
    FlowHandler flowChanged_;
    PipeWirePictureExchange exchange_;
    PipeWirePictureIntake intake_;  // the input's thread's
    pw_core* core_ = nullptr;       // from here on the session's thread's
    std::optional<PipeWireVideoSource> source_;
    std::optional<PipeWireVideoTap> tap_;
    bool isFailing_ = false;  // it has failed, and no picture has come since
    PipeWireLoopSource retry_;
    std::thread thread_;
};

PipeWireVideoInput::PipeWireVideoInput(std::shared_ptr<PipeWireSession> session, std::string name,
                                       std::shared_ptr<AVVideoConverting> converting, Sink sink)
    : session_(std::move(session)),
      state_(std::make_shared<State>(std::move(name), std::move(converting), std::move(sink))) {}

PipeWireVideoInput::~PipeWireVideoInput() {
    stop();
}

void PipeWireVideoInput::start(FlowHandler flowChanged) {
    state_->start(std::move(flowChanged));
    session_->add(state_);
}

void PipeWireVideoInput::stop() {
    session_->remove(state_);
    state_->stop();
}

void PipeWireVideoInput::setSource(const std::optional<PipeWireVideoSource>& source) {
    state_->setSource(source);
}

void PipeWireVideoInput::sourceFailed(const std::string& reason) {
    state_->sourceFailed(reason);
}

}  // namespace zorvane
