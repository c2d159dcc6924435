#include "Zorvane/Platform/Linux/PipeWire/PipeWireRegistry.hpp"

#include <pipewire/extensions/metadata.h>

#include <algorithm>
#include <charconv>
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

template <class Number>
std::optional<Number> numberOf(const PipeWireProperties& properties, std::string_view key) {
    const std::string& text = rawValue(properties, key);
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && !text.empty() ? std::optional(number) : std::nullopt;
}

std::string_view valueOf(const spa_dict* properties, const char* key) {
    const char* value = properties ? spa_dict_lookup(properties, key) : nullptr;
    return value ? value : std::string_view();
}

}  // namespace

void PipeWireRegistry::connected(pw_core& core) {
    core_ = &core;
    static const pw_core_events coreEvents{.version = PW_VERSION_CORE_EVENTS, .done = onDone};
    pw_core_add_listener(core_, coreHook_.emplace().get(), &coreEvents, this);
    static const pw_registry_events registryEvents{
        .version = PW_VERSION_REGISTRY_EVENTS, .global = onGlobal, .global_remove = onGlobalRemoved};
    registry_.emplace(pw_core_get_registry(core_, PW_VERSION_REGISTRY, 0)).listen(&registryEvents, this);
    objectAsked();
}

void PipeWireRegistry::disconnected() {
    nodes_.clear();
    cards_.clear();
    defaults_.reset();
    registry_.reset();
    coreHook_.reset();
    core_ = nullptr;
    question_.reset();
    isQuestionLate_ = false;
    publish_({});
}

void PipeWireRegistry::objectChanged() {
    if (!question_) {
        askServer();
    }
}

void PipeWireRegistry::objectAsked() {
    isQuestionLate_ = question_.has_value();
    objectChanged();
}

void PipeWireRegistry::askServer() {
    isQuestionLate_ = false;
    question_ = pw_core_sync(core_, PW_ID_CORE, 0);
}

void PipeWireRegistry::onDone(void* data, std::uint32_t id, int sequence) {
    auto& self = *static_cast<PipeWireRegistry*>(data);
    if (id == PW_ID_CORE && sequence == self.question_) {
        self.serverAnswered();
    }
}

void PipeWireRegistry::serverAnswered() {
    question_.reset();
    if (isQuestionLate_) {
        askServer();
    } else {
        publish_(sources());
    }
}

void PipeWireRegistry::onGlobal(void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                                const spa_dict* properties) {
    static_cast<PipeWireRegistry*>(data)->add(id, type, properties);
}

void PipeWireRegistry::onGlobalRemoved(void* data, std::uint32_t id) {
    static_cast<PipeWireRegistry*>(data)->remove(id);
}

void PipeWireRegistry::add(std::uint32_t id, std::string_view type, const spa_dict* properties) {
    auto* registry = registry_->as<pw_registry>();
    if (type == PW_TYPE_INTERFACE_Node) {
        if (const auto mediaType = mediaTypeOf(valueOf(properties, PW_KEY_MEDIA_CLASS))) {
            nodes_.push_back(std::make_unique<PipeWireNode>(registry, id, *mediaType, *this));
        }
    } else if (type == PW_TYPE_INTERFACE_Device) {
        cards_.push_back(std::make_unique<PipeWireCard>(registry, id, *this));
    } else if (type == PW_TYPE_INTERFACE_Metadata && valueOf(properties, PW_KEY_METADATA_NAME) == "default") {
        defaults_ = std::make_unique<PipeWireDefaults>(registry, id, *this);
    }
}

void PipeWireRegistry::remove(std::uint32_t id) {
    const auto hasID = [id](const auto& object) { return object->id() == id; };
    std::size_t removed = std::erase_if(nodes_, hasID) + std::erase_if(cards_, hasID);
    if (defaults_ && defaults_->id() == id) {
        defaults_.reset();
        ++removed;
    }
    if (removed > 0) {
        objectChanged();
    }
}

PipeWireSources PipeWireRegistry::sources() const {
    PipeWireSources sources;
    for (const auto& node : nodes_) {
        if (!node->properties().empty()) {
            sources.sources.push_back(describe(*node));
        }
    }
    if (defaults_) {
        sources.defaultNodes = defaults_->nodeNames();
    }
    return sources;
}

PipeWireSource PipeWireRegistry::describe(const PipeWireNode& node) const {
    PipeWireSource source{.nodeID = node.id(), .mediaType = node.mediaType(), .node = node.properties()};
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
