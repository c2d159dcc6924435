#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoPort.hpp"

#include "Zorvane/Platform/Linux/PipeWire/PipeWireProperties.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoPods.hpp"

namespace zorvane {

PipeWireVideoPort::PipeWireVideoPort(pw_registry* registry, std::uint32_t id, const spa_dict* properties,
                                     PipeWireObjectObserver& observer)
    : id_(id),
      nodeID_(numberOf<std::uint32_t>(properties, PW_KEY_NODE_ID).value_or(SPA_ID_INVALID)),
      serial_(numberOf<std::uint64_t>(properties, PW_KEY_OBJECT_SERIAL).value_or(0)),
      observer_(observer),
      proxy_(pw_registry_bind(registry, id, PW_TYPE_INTERFACE_Port, PW_VERSION_PORT, 0)) {
    static const pw_port_events events{.version = PW_VERSION_PORT_EVENTS, .param = onParameter};
    proxy_.listen(&events, this);
    std::uint32_t parameter = SPA_PARAM_EnumFormat;
    pw_port_subscribe_params(proxy_.as<pw_port>(), &parameter, 1);
    observer_.objectAsked();
}

void PipeWireVideoPort::onParameter(void* data, int, std::uint32_t, std::uint32_t index, std::uint32_t,
                                    const spa_pod* value) {
    auto& self = *static_cast<PipeWireVideoPort*>(data);
    if (index == 0) {
        self.offers_.clear();  // they are all told again when one changes
    }
    const auto offers = parseVideoOffers(value);
    self.offers_.insert(self.offers_.end(), offers.begin(), offers.end());
    self.observer_.objectChanged();
}

}  // namespace zorvane
