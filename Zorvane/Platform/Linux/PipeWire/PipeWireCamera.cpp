#include "Zorvane/Platform/Linux/PipeWire/PipeWireCamera.hpp"

#include <atomic>
#include <optional>
#include <string>
#include <utility>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {

/// What the list and the input tell of; the input is set up, and the handler told, on the session's thread.
class PipeWireCamera::Following final : public PipeWireClient {
  public:
    Following(std::weak_ptr<PipeWireDeviceList> list, std::shared_ptr<const PipeWireCaptureDevice> device,
              std::unique_ptr<PipeWireVideoInput> input, PresenceHandler handler)
        : list_(std::move(list)), device_(std::move(device)), input_(std::move(input)), handler_(std::move(handler)) {}

    PipeWireVideoInput& input() { return *input_; }

    /// From here on nothing is told: not the end of the connection either.
    void end() { isEnded_ = true; }

    /// The input is connected before. The list may know the device already, or hear of it later.
    void connected(pw_core&) override { follow(); }
    void disconnected() override { follow(); }

    void follow() {
        if (isEnded_) {
            return;
        }
        const auto source = device_->videoSource();
        input_->setSource(source);
        const std::string error = device_->error();
        const bool isNews = std::exchange(error_, error) != error;
        if (source && isNews && !error.empty()) {
            input_->sourceFailed(error);
        }
        if (!source) {
            isFailing_ = false;
            interrupt(absence());
        } else if (!isFailing_) {
            resume();
        }
    }

    void flowChanged(const std::optional<std::string>& failure) {
        isFailing_ = failure.has_value();
        if (isEnded_) {
            return;
        }
        if (failure) {
            interrupt(trouble(*failure));
        } else {
            resume();
        }
    }

  private:
    void interrupt(const NSError& reason) {
        if (!std::exchange(isInterrupted_, true)) {
            handler_(std::make_exception_ptr(reason));
        }
    }

    void resume() {
        if (std::exchange(isInterrupted_, false)) {
            handler_(nullptr);
        }
    }

    NSError trouble(const std::string& words) const {
        const std::string reason = words.empty() ? "PipeWire gives no reason" : words;
        return {AVFoundationErrorDomain,
                AVErrorUnknown,
                {"The camera " + name() + " gives no pictures. Another program may be using it: " + reason + '.'}};
    }

    NSError absence() const {
        const auto list = list_.lock();
        return {AVFoundationErrorDomain,
                AVErrorDeviceWasDisconnected,
                {list && list->isConnected()
                     ? "The camera " + name() + " was unplugged."
                     : "PipeWire ended: the camera " + name() + " can't be seen until it is back."}};
    }

    std::string name() const { return "“" + device_->localizedName() + "”"; }

    const std::weak_ptr<PipeWireDeviceList> list_;
    const std::shared_ptr<const PipeWireCaptureDevice> device_;
    const std::unique_ptr<PipeWireVideoInput> input_;
    const PresenceHandler handler_;
    std::atomic<bool> isEnded_ = false;
    std::string error_;
    bool isFailing_ = false;
    bool isInterrupted_ = false;
};

PipeWireCamera::PipeWireCamera(std::shared_ptr<PipeWireSession> session, std::shared_ptr<PipeWireDeviceList> list,
                               std::shared_ptr<const PipeWireCaptureDevice> device,
                               std::unique_ptr<PipeWireVideoInput> input, PresenceHandler handler)
    : session_(std::move(session)),
      following_(std::make_shared<Following>(list, std::move(device), std::move(input), std::move(handler))) {
    const std::weak_ptr<Following> weak = following_;
    listObservation_ = list->observeUpdates([weak] {
        if (const auto following = weak.lock()) {
            following->follow();
        }
    });
    following_->input().start([weak](const std::optional<std::string>& failure) {
        if (const auto following = weak.lock()) {
            following->flowChanged(failure);
        }
    });
    session_->add(following_);
}

PipeWireCamera::~PipeWireCamera() {
    following_->end();
    session_->remove(following_);
    following_->input().stop();
}

}  // namespace zorvane
