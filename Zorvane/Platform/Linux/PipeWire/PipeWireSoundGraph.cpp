#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundGraph.hpp"

#include <pipewire/extensions/metadata.h>

#include <algorithm>
#include <utility>

#include "Zorvane/Platform/Linux/System/RunningProgram.hpp"

namespace zorvane {
namespace {

/// A device's, as in "Audio/Sink", or an application's, as in "Stream/Output/Audio".
bool isSound(std::string_view mediaClass) {
    return mediaClass.starts_with("Audio/") || mediaClass.ends_with("/Audio");
}

/// One that hears what happens in the room, though it may play there as well.
bool isMicrophone(std::string_view mediaClass) {
    return mediaClass.starts_with("Audio/Source") || mediaClass == "Audio/Duplex";
}

/// What an application says of itself. In a sandbox, or on another machine, it may state a number that is another
/// process's here; then it is nobody's.
std::int64_t statedProcess(const PipeWireProperties& node) {
    const auto process = numberOf<std::int32_t>(node, PW_KEY_APP_PROCESS_ID).value_or(0);
    const std::string& program = rawValue(node, PW_KEY_APP_PROCESS_BINARY);
    const bool isElsewhere = rawValue(node, "pulse.server.type") == "tcp";
    return isElsewhere || (!program.empty() && runsAnotherProgram(process, program)) ? 0 : process;
}

}  // namespace

void PipeWireSoundGraph::add(pw_registry* registry, std::uint32_t id, std::string_view type,
                             const spa_dict* properties) {
    if (type == PW_TYPE_INTERFACE_Node) {
        if (isSound(rawValue(properties, PW_KEY_MEDIA_CLASS))) {
            nodes_.push_back(std::make_unique<PipeWireNode>(registry, id, AVMediaType::audio, *this));
        }
    } else if (type == PW_TYPE_INTERFACE_Port) {
        const auto node = numberOf<std::uint32_t>(properties, PW_KEY_NODE_ID);
        if (std::ranges::find(nodes_, node, [](const auto& known) { return known->id(); }) != nodes_.end()) {
            ports_.push_back(std::make_unique<PipeWirePort>(registry, id, properties, *this));
        }
    } else if (type == PW_TYPE_INTERFACE_Link) {
        wiring_.add(id, type, properties);
        objectChanged();
    } else if (type == PW_TYPE_INTERFACE_Client) {
        clients_[id] = numberOf<std::int64_t>(properties, PW_KEY_SEC_PID).value_or(0);
    } else if (type == PW_TYPE_INTERFACE_Metadata && rawValue(properties, PW_KEY_METADATA_NAME) == "default") {
        defaults_ = std::make_unique<PipeWireDefaults>(registry, id, *this);
    }
}

bool PipeWireSoundGraph::remove(std::uint32_t id) {
    const auto hasID = [id](const auto& object) { return object->id() == id; };
    clients_.erase(id);
    std::size_t removed = std::erase_if(nodes_, hasID) + std::erase_if(ports_, hasID) + wiring_.remove(id);
    if (defaults_ && defaults_->id() == id) {
        defaults_.reset();
        ++removed;
    }
    return removed > 0;
}

void PipeWireSoundGraph::clear() {
    nodes_.clear();
    ports_.clear();
    wiring_.clear();
    clients_.clear();
    defaults_.reset();
}

void PipeWireSoundGraph::publish(bool isConnected) {
    PipeWireSoundScene now = scene(isConnected);
    if (now != published_) {
        published_ = std::move(now);
        observer_(*published_);
    }
}

PipeWireSoundScene PipeWireSoundGraph::scene(bool isConnected) const {
    PipeWireSoundScene scene{.isConnected = isConnected, .links = wiring_.links()};
    for (const auto& node : nodes_) {
        if (!node->properties().empty()) {
            scene.nodes.push_back(describe(*node));
        }
    }
    if (defaults_) {
        scene.defaultSinkName = defaults_->nodeName("default.audio.sink");
        scene.defaultSourceName = defaults_->nodeName("default.audio.source");
    }
    return scene;
}

PipeWireSoundNode PipeWireSoundGraph::describe(const PipeWireNode& node) const {
    PipeWireSoundNode description{.id = node.id(),
                                  .mediaClass = rawValue(node.properties(), PW_KEY_MEDIA_CLASS),
                                  .name = rawValue(node.properties(), PW_KEY_NODE_NAME),
                                  .processID = processOf(node),
                                  .properties = node.properties()};
    std::vector<const PipeWirePort*> ports;
    for (const auto& port : ports_) {
        if (port->nodeID() == node.id()) {
            ports.push_back(port.get());
        }
    }
    std::ranges::stable_sort(ports, {}, &PipeWirePort::number);
    for (const PipeWirePort* port : ports) {
        description.ports.push_back(port->port(isMicrophone(description.mediaClass)));
    }
    return description;
}

/// That of its client, which the system has told the server; but as the node says for one that PipeWire's PulseAudio
/// server makes on an application's behalf.
std::int64_t PipeWireSoundGraph::processOf(const PipeWireNode& node) const {
    if (rawValue(node.properties(), PW_KEY_CLIENT_API) == "pipewire-pulse") {
        return statedProcess(node.properties());
    }
    const auto client = numberOf<std::uint32_t>(node.properties(), PW_KEY_CLIENT_ID);
    const auto found = client ? clients_.find(*client) : clients_.end();
    return found == clients_.end() ? 0 : found->second;
}

}  // namespace zorvane
