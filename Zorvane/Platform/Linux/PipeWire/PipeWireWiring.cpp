#include "Zorvane/Platform/Linux/PipeWire/PipeWireWiring.hpp"

#include <pipewire/pipewire.h>

#include <algorithm>

namespace zorvane {
namespace {

std::uint32_t idOf(const spa_dict* properties, const char* key) {
    return numberOf<std::uint32_t>(properties, key).value_or(SPA_ID_INVALID);
}

}  // namespace

bool PipeWireWiring::add(std::uint32_t id, std::string_view type, const spa_dict* properties) {
    if (type == PW_TYPE_INTERFACE_Node) {
        clients_[id] = idOf(properties, PW_KEY_CLIENT_ID);
    } else if (type == PW_TYPE_INTERFACE_Link) {
        links_[id] = {.outputNode = idOf(properties, PW_KEY_LINK_OUTPUT_NODE),
                      .inputNode = idOf(properties, PW_KEY_LINK_INPUT_NODE)};
    } else if (type == PW_TYPE_INTERFACE_Port) {
        if (rawValue(properties, PW_KEY_PORT_DIRECTION) == "out") {
            outputs_[id] = idOf(properties, PW_KEY_NODE_ID);
        }
    } else {
        return false;
    }
    return true;
}

bool PipeWireWiring::remove(std::uint32_t id) {
    return clients_.erase(id) + outputs_.erase(id) + links_.erase(id) > 0;
}

void PipeWireWiring::clear() {
    clients_.clear();
    outputs_.clear();
    links_.clear();
}

std::uint32_t PipeWireWiring::outputCount(std::uint32_t node) const {
    return static_cast<std::uint32_t>(std::ranges::count(outputs_, node, [](const auto& port) { return port.second; }));
}

bool PipeWireWiring::isHeardByOthers(std::uint32_t node, std::uint32_t client) const {
    return std::ranges::any_of(links_, [&](const auto& entry) {
        const auto owner = clients_.find(entry.second.inputNode);
        return entry.second.outputNode == node && (owner == clients_.end() || owner->second != client);
    });
}

std::vector<PipeWireSoundLink> PipeWireWiring::links() const {
    std::vector<PipeWireSoundLink> links;
    for (const auto& [id, link] : links_) {
        if (std::ranges::find(links, link) == links.end()) {
            links.push_back(link);
        }
    }
    return links;
}

}  // namespace zorvane
