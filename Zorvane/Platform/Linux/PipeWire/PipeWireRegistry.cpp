#include "Zorvane/Platform/Linux/PipeWire/PipeWireRegistry.hpp"

#include <pipewire/extensions/metadata.h>

#include <algorithm>
#include <utility>

namespace zorvane {
namespace {

/// What a node gives, if that is what a microphone or a camera gives. A monitor of speakers is a part of an
/// "Audio/Sink" and no node of its own.
std::optional<AVMediaType> mediaTypeOf(std::string_view mediaClass) {
    if (mediaClass == "Audio/Source" || mediaClass == "Audio/Source/Virtual" || mediaClass == "Audio/Duplex") {
        return AVMediaType::audio;
    }
    if (mediaClass == "Video/Source") {
        return AVMediaType::video;
    }
    return std::nullopt;
}

}  // namespace

void PipeWireRegistry::add(pw_registry* registry, std::uint32_t id, std::string_view type, const spa_dict* properties) {
    if (wiring_.add(id, type, properties)) {
        objectChanged();
    }
    if (type == PW_TYPE_INTERFACE_Node) {
        if (const auto mediaType = mediaTypeOf(rawValue(properties, PW_KEY_MEDIA_CLASS))) {
            nodes_.push_back(std::make_unique<PipeWireNode>(registry, id, *mediaType, *this));
        }
    } else if (type == PW_TYPE_INTERFACE_Port) {
        if (isOutputOfCamera(properties)) {
            videoPorts_.push_back(std::make_unique<PipeWireVideoPort>(registry, id, properties, *this));
        }
    } else if (type == PW_TYPE_INTERFACE_Device) {
        cards_.push_back(std::make_unique<PipeWireCard>(registry, id, *this));
    } else if (type == PW_TYPE_INTERFACE_Metadata && rawValue(properties, PW_KEY_METADATA_NAME) == "default") {
        defaults_ = std::make_unique<PipeWireDefaults>(registry, id, *this);
    }
}

bool PipeWireRegistry::remove(std::uint32_t id) {
    const auto hasID = [id](const auto& object) { return object->id() == id; };
    std::size_t removed = std::erase_if(nodes_, hasID) + std::erase_if(cards_, hasID) +
                          std::erase_if(videoPorts_, hasID) + wiring_.remove(id);
    if (defaults_ && defaults_->id() == id) {
        defaults_.reset();
        ++removed;
    }
    return removed > 0;
}

void PipeWireRegistry::clear() {
    nodes_.clear();
    cards_.clear();
    videoPorts_.clear();
    wiring_.clear();
    defaults_.reset();
}

void PipeWireRegistry::publish(bool isConnected) {
    publish_(sources(isConnected));
}

PipeWireSources PipeWireRegistry::sources(bool isConnected) const {
    PipeWireSources sources{.isConnected = isConnected};
    for (const auto& node : nodes_) {
        if (!node->properties().empty()) {
            sources.sources.push_back(describe(*node));
        }
    }
    if (defaults_) {
        sources.defaultNodes = defaults_->sourceNames();
    }
    return sources;
}

bool PipeWireRegistry::isOutputOfCamera(const spa_dict* port) const {
    const auto nodeID = numberOf<std::uint32_t>(port, PW_KEY_NODE_ID);
    const auto node = std::ranges::find(nodes_, nodeID, [](const auto& known) { return known->id(); });
    return node != nodes_.end() && (*node)->mediaType() == AVMediaType::video &&
           rawValue(port, PW_KEY_PORT_DIRECTION) == "out";
}

PipeWireSource PipeWireRegistry::describe(const PipeWireNode& node) const {
    PipeWireSource source{.nodeID = node.id(),
                          .mediaType = node.mediaType(),
                          .node = node.properties(),
                          .format = node.format(),
                          .error = node.error(),
                          .isUsedByOthers = wiring_.isHeardByOthers(node.id(), ownClient())};
    if (const std::uint32_t ports = wiring_.outputCount(node.id()); ports > 0) {
        source.format.channelCount = ports;  // the session manager may have chosen fewer or more
    }
    const auto port = std::ranges::find(videoPorts_, node.id(), [](const auto& known) { return known->nodeID(); });
    if (port != videoPorts_.end()) {
        source.outputPort = (*port)->serial();
        source.videoOffers = (*port)->offers();
    }
    const auto cardID = numberOf<std::uint32_t>(node.properties(), PW_KEY_DEVICE_ID);
    const auto card = std::ranges::find_if(cards_, [&](const auto& other) { return other->id() == cardID; });
    if (card != cards_.end()) {
        source.card = (*card)->properties();
        const auto cardDevice = numberOf<int>(node.properties(), "card.profile.device");
        source.isCutOff = cardDevice && (*card)->routes().isCutOff(*cardDevice);
    }
    return source;
}

}  // namespace zorvane
