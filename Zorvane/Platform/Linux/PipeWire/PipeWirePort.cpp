#include "Zorvane/Platform/Linux/PipeWire/PipeWirePort.hpp"

#include <spa/param/latency-utils.h>

namespace zorvane {
namespace {

PipeWireSoundPort describe(const spa_dict* properties) {
    using enum PipeWireSoundPort::Kind;
    PipeWireSoundPort port{.serial = numberOf<std::uint64_t>(properties, PW_KEY_OBJECT_SERIAL).value_or(0),
                           .channel = std::string(rawValue(properties, PW_KEY_AUDIO_CHANNEL))};
    if (rawValue(properties, PW_KEY_PORT_MONITOR) == "true") {
        port.kind = monitor;
    } else {
        port.kind = rawValue(properties, PW_KEY_PORT_DIRECTION) == "in" ? input : output;
    }
    return port;
}

}  // namespace

PipeWirePort::PipeWirePort(pw_registry* registry, std::uint32_t id, const spa_dict* properties,
                           PipeWireObjectObserver& observer)
    : id_(id),
      nodeID_(numberOf<std::uint32_t>(properties, PW_KEY_NODE_ID).value_or(SPA_ID_INVALID)),
      number_(numberOf<std::uint32_t>(properties, PW_KEY_PORT_ID).value_or(0)),
      port_(describe(properties)),
      observer_(observer),
      proxy_(pw_registry_bind(registry, id, PW_TYPE_INTERFACE_Port, PW_VERSION_PORT, 0)) {
    static const pw_port_events events{.version = PW_VERSION_PORT_EVENTS, .param = onParameter};
    proxy_.listen(&events, this);
    std::uint32_t parameter = SPA_PARAM_Latency;
    pw_port_subscribe_params(proxy_.as<pw_port>(), &parameter, 1);
    observer_.objectAsked();
}

PipeWireSoundPort PipeWirePort::port(bool isOfMicrophone) const {
    PipeWireSoundPort port = port_;
    port.latency = isOfMicrophone && port.kind != PipeWireSoundPort::Kind::input ? sinceHeard_ : untilHeard_;
    return port;
}

/// Sound that goes two ways has two latencies. Of what is played the longer one is true: the other way may be to one
/// who records it and says that this takes no time.
void PipeWirePort::onParameter(void* data, int, std::uint32_t, std::uint32_t, std::uint32_t, const spa_pod* value) {
    auto& self = *static_cast<PipeWirePort*>(data);
    spa_latency_info latency;
    if (!value || spa_latency_parse(value, &latency) < 0) {
        return;
    }
    if (latency.direction == SPA_DIRECTION_INPUT) {
        self.untilHeard_ = {latency.max_quantum, latency.max_rate, std::chrono::nanoseconds(latency.max_ns)};
    } else {
        self.sinceHeard_ = {latency.min_quantum, latency.min_rate, std::chrono::nanoseconds(latency.min_ns)};
    }
    self.observer_.objectChanged();
}

}  // namespace zorvane
