#include "Zorvane/Platform/Linux/PipeWire/PipeWireInputLinks.hpp"

#include <pipewire/link.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireProperties.hpp"

namespace zorvane {
namespace {

void* makeLink(pw_core& core, std::uint32_t outputPort, std::uint32_t inputPort, bool isPassive) {
    const std::string output = std::to_string(outputPort);
    const std::string input = std::to_string(inputPort);
    const spa_dict_item items[] = {{PW_KEY_LINK_OUTPUT_PORT, output.c_str()},
                                   {PW_KEY_LINK_INPUT_PORT, input.c_str()},
                                   {PW_KEY_LINK_PASSIVE, isPassive ? "true" : "false"}};
    const spa_dict properties{0, static_cast<std::uint32_t>(std::size(items)), items};
    return pw_core_create_object(&core, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, &properties, 0);
}

}  // namespace

/// One link that was asked for, and what the server says of it.
class PipeWireInputLinks::Link {
  public:
    Link(PipeWireInputLinks& links, void* proxy) : links_(links), proxy_(proxy) {
        static const pw_link_events events{.version = PW_VERSION_LINK_EVENTS, .info = onInfo};
        proxy_.listen(&events, this);
    }

  private:
    static void onInfo(void* data, const pw_link_info* info) {
        auto& self = *static_cast<Link*>(data);
        const bool isError = (info->change_mask & PW_LINK_CHANGE_MASK_STATE) && info->state == PW_LINK_STATE_ERROR;
        if (isError && self.links_.failed_) {
            self.links_.failed_(info->error ? info->error : "");
        }
    }

    PipeWireInputLinks& links_;
    PipeWireProxy proxy_;
};

PipeWireInputLinks::PipeWireInputLinks(pw_core& core, std::function<std::uint32_t()> ownNode)
    : core_(core), ownNode_(std::move(ownNode)), registry_(pw_core_get_registry(&core, PW_VERSION_REGISTRY, 0)) {
    static const pw_registry_events events{
        .version = PW_VERSION_REGISTRY_EVENTS, .global = onGlobal, .global_remove = onGlobalRemoved};
    registry_.listen(&events, this);
}

PipeWireInputLinks::~PipeWireInputLinks() = default;

void PipeWireInputLinks::setWires(std::set<PipeWireWire> wires, Waking waking) {
    waking_ = waking;
    wires_ = std::move(wires);
    std::erase_if(links_, [this](const auto& link) { return !wires_.contains(link.first); });
    linkWhatIsMissing();
}

void PipeWireInputLinks::linkWhatIsMissing() {
    for (const PipeWireWire& wire : wires_) {
        const auto output = std::ranges::find(serials_, wire.outputPort, [](const auto& port) { return port.second; });
        const auto input = ownPorts_.find(wire.input);
        if (output != serials_.end() && input != ownPorts_.end() && !links_.contains(wire)) {
            void* proxy = makeLink(core_, output->first, input->second, waking_ == Waking::letsSleep);
            links_[wire] = std::make_unique<Link>(*this, proxy);
        }
    }
}

void PipeWireInputLinks::onGlobal(void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                                  const spa_dict* properties) {
    static_cast<PipeWireInputLinks*>(data)->add(id, type, properties);
}

void PipeWireInputLinks::onGlobalRemoved(void* data, std::uint32_t id) {
    auto& self = *static_cast<PipeWireInputLinks*>(data);
    self.serials_.erase(id);
    std::erase_if(self.ownPorts_, [id](const auto& port) { return port.second == id; });
}

void PipeWireInputLinks::add(std::uint32_t id, std::string_view type, const spa_dict* properties) {
    if (type == PW_TYPE_INTERFACE_Port) {
        addPort(id, properties);
    } else if (type == PW_TYPE_INTERFACE_Link) {
        inspectLink(id, properties);
    }
}

void PipeWireInputLinks::addPort(std::uint32_t id, const spa_dict* properties) {
    serials_[id] = numberOf<std::uint64_t>(properties, PW_KEY_OBJECT_SERIAL).value_or(0);
    if (numberOf<std::uint32_t>(properties, PW_KEY_NODE_ID) == ownNode_()) {
        ownPorts_[numberOf<std::uint32_t>(properties, PW_KEY_PORT_ID).value_or(0)] = id;
    }
    linkWhatIsMissing();
}

void PipeWireInputLinks::inspectLink(std::uint32_t id, const spa_dict* properties) {
    const auto inputPort = numberOf<std::uint32_t>(properties, PW_KEY_LINK_INPUT_PORT);
    const auto input = std::ranges::find(ownPorts_, inputPort, [](const auto& port) { return port.second; });
    if (input == ownPorts_.end()) {
        return;
    }
    const auto output = serials_.find(numberOf<std::uint32_t>(properties, PW_KEY_LINK_OUTPUT_PORT).value_or(0));
    if (output == serials_.end() || !links_.contains({output->second, input->first})) {
        pw_registry_destroy(registry_.as<pw_registry>(), id);
    }
}

}  // namespace zorvane
