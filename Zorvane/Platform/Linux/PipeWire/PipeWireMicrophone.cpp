#include "Zorvane/Platform/Linux/PipeWire/PipeWireMicrophone.hpp"

#include <pipewire/keys.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {

PipeWireSoundSources soundOfMicrophone(const PipeWireSoundNode& node, std::uint32_t channelCount) {
    std::vector<PipeWireSoundPort> outputs;
    std::ranges::copy_if(node.ports, std::back_inserter(outputs),
                         [](const auto& port) { return port.kind != PipeWireSoundPort::Kind::input; });
    PipeWireSoundSources sources{.distance = {.side = PipeWireSoundDistance::Side::recorded}};
    if (outputs.empty()) {
        return sources;
    }
    sources.distance.latency = outputs.front().latency;
    for (std::uint32_t channel = 0; channel < channelCount; ++channel) {
        const std::size_t port = outputs.size() == 1 ? 0 : channel;
        if (port < outputs.size()) {
            sources.wires.insert({.outputPort = outputs[port].serial, .input = channel});
        }
    }
    return sources;
}

/// What list and graph tell of; the input is set up, and the handler told, on the session's thread.
class PipeWireMicrophone::Wiring {
  public:
    Wiring(std::shared_ptr<const PipeWireCaptureDevice> device, std::unique_ptr<PipeWireSoundInput> input,
           PresenceHandler handler)
        : device_(std::move(device)), input_(std::move(input)), handler_(std::move(handler)) {}

    PipeWireSoundInput& input() { return *input_; }

    /// From here on nothing is told: not the end of the graph either, which is one of the connection for it.
    void end() { isEnded_ = true; }

    void sceneChanged(const PipeWireSoundScene& scene) {
        if (isEnded_) {
            return;
        }
        scene_ = scene;
        if (const PipeWireSoundNode* node = deviceNode()) {
            connect(*node);
        } else if (isPresent_) {
            isPresent_ = false;
            handler_(std::make_exception_ptr(absence()));
        }
    }

    /// The list may know a new node before the graph or after it. That one is gone is told by the graph, which also
    /// tells why.
    void listChanged() {
        if (const PipeWireSoundNode* node = isEnded_ ? nullptr : deviceNode()) {
            connect(*node);
        }
    }

  private:
    const PipeWireSoundNode* deviceNode() const {
        const std::string serial = std::to_string(device_->nodeSerial());
        const auto node = std::ranges::find_if(scene_.nodes, [&](const PipeWireSoundNode& candidate) {
            return rawValue(candidate.properties, PW_KEY_OBJECT_SERIAL) == serial;
        });
        return node == scene_.nodes.end() ? nullptr : &*node;
    }

    void connect(const PipeWireSoundNode& node) {
        input_->setSources(soundOfMicrophone(node, input_->channelCount()));
        if (!std::exchange(isPresent_, true)) {
            handler_(nullptr);
        }
    }

    NSError absence() const {
        const std::string name = "“" + device_->localizedName() + "”";
        return {AVFoundationErrorDomain,
                AVErrorDeviceWasDisconnected,
                {scene_.isConnected ? "The microphone " + name + " was unplugged."
                                    : "PipeWire ended: the microphone " + name + " can't be heard until it is back."}};
    }

    const std::shared_ptr<const PipeWireCaptureDevice> device_;
    const std::unique_ptr<PipeWireSoundInput> input_;
    const PresenceHandler handler_;
    PipeWireSoundScene scene_;
    std::atomic<bool> isEnded_ = false;
    bool isPresent_ = true;  // until the graph has told otherwise
};

PipeWireMicrophone::PipeWireMicrophone(std::shared_ptr<PipeWireSession> session,
                                       std::shared_ptr<PipeWireDeviceList> list,
                                       std::shared_ptr<const PipeWireCaptureDevice> device,
                                       std::unique_ptr<PipeWireSoundInput> input, PresenceHandler handler)
    : session_(std::move(session)),
      wiring_(std::make_shared<Wiring>(std::move(device), std::move(input), std::move(handler))) {
    const std::weak_ptr<Wiring> weak = wiring_;
    graph_ = std::make_shared<PipeWireSoundGraph>([weak](const PipeWireSoundScene& scene) {
        if (const auto wiring = weak.lock()) {
            wiring->sceneChanged(scene);
        }
    });
    listObservation_ = list->observeUpdates([weak] {
        if (const auto wiring = weak.lock()) {
            wiring->listChanged();
        }
    });
    wiring_->input().start();
    session_->add(graph_);
}

PipeWireMicrophone::~PipeWireMicrophone() {
    wiring_->end();
    session_->remove(graph_);
    wiring_->input().stop();
}

}  // namespace zorvane
