#include "Zorvane/Platform/Linux/PipeWire/PipeWireObjects.hpp"

#include <pipewire/extensions/metadata.h>
#include <spa/param/param.h>

#include <iterator>
#include <span>
#include <utility>

namespace zorvane {

PipeWireNode::PipeWireNode(pw_registry* registry, std::uint32_t id, AVMediaType mediaType,
                           PipeWireObjectObserver& observer)
    : id_(id),
      mediaType_(mediaType),
      observer_(observer),
      proxy_(pw_registry_bind(registry, id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0)) {
    static const pw_node_events events{.version = PW_VERSION_NODE_EVENTS, .info = onInfo, .param = onParameter};
    proxy_.listen(&events, this);
    if (mediaType == AVMediaType::audio) {
        std::uint32_t formats[] = {SPA_PARAM_EnumFormat, SPA_PARAM_Format};
        pw_node_subscribe_params(proxy_.as<pw_node>(), formats, std::size(formats));
    }
    observer_.objectAsked();
}

void PipeWireNode::onInfo(void* data, const pw_node_info* info) {
    auto& self = *static_cast<PipeWireNode*>(data);
    if (info->change_mask & PW_NODE_CHANGE_MASK_PROPS) {
        self.properties_ = pipeWireProperties(info->props);
        self.observer_.objectChanged();
    }
    if (info->change_mask & PW_NODE_CHANGE_MASK_STATE) {
        const char* words = info->error && *info->error ? info->error : "it gives no reason";
        std::string error = info->state == PW_NODE_STATE_ERROR ? words : "";
        if (std::exchange(self.error_, error) != error) {
            self.observer_.objectChanged();
        }
    }
}

void PipeWireNode::onParameter(void* data, int, std::uint32_t parameter, std::uint32_t index, std::uint32_t,
                               const spa_pod* value) {
    auto& self = *static_cast<PipeWireNode*>(data);
    const PipeWireNodeFormat format = parseNodeFormat(value);
    if (format.rate > 0 && index == 0) {  // the first one is the preferred one
        (parameter == SPA_PARAM_Format ? self.format_ : self.preferredFormat_) = format;
        self.observer_.objectChanged();
    }
}

PipeWireCard::PipeWireCard(pw_registry* registry, std::uint32_t id, PipeWireObjectObserver& observer)
    : id_(id),
      observer_(observer),
      proxy_(pw_registry_bind(registry, id, PW_TYPE_INTERFACE_Device, PW_VERSION_DEVICE, 0)) {
    static const pw_device_events events{.version = PW_VERSION_DEVICE_EVENTS, .info = onInfo, .param = onParameter};
    proxy_.listen(&events, this);
    observer_.objectAsked();
}

PipeWireRoutes PipeWireCard::routes() const {
    return {.active = active_.routes, .possible = possible_.routes};
}

void PipeWireCard::onInfo(void* data, const pw_device_info* info) {
    auto& self = *static_cast<PipeWireCard*>(data);
    if (info->change_mask & PW_DEVICE_CHANGE_MASK_PROPS) {
        self.properties_ = pipeWireProperties(info->props);
        self.observer_.objectChanged();
    }
    if (info->change_mask & PW_DEVICE_CHANGE_MASK_PARAMS) {
        for (const spa_param_info& parameter : std::span(info->params, info->n_params)) {
            self.askAgainIfChanged(parameter);
        }
    }
}

PipeWireCard::RouteList* PipeWireCard::listOf(std::uint32_t parameter) {
    return parameter == SPA_PARAM_Route ? &active_ : parameter == SPA_PARAM_EnumRoute ? &possible_ : nullptr;
}

void PipeWireCard::askAgainIfChanged(const spa_param_info& parameter) {
    RouteList* list = listOf(parameter.id);
    if (list && list->flags != parameter.flags && (parameter.flags & SPA_PARAM_INFO_READ)) {
        list->flags = parameter.flags;
        list->request = pw_device_enum_params(proxy_.as<pw_device>(), 0, parameter.id, 0, UINT32_MAX, nullptr);
        list->routes.clear();
        observer_.objectAsked();
    }
}

void PipeWireCard::onParameter(void* data, int sequence, std::uint32_t parameter, std::uint32_t, std::uint32_t,
                               const spa_pod* value) {
    auto& self = *static_cast<PipeWireCard*>(data);
    RouteList* list = self.listOf(parameter);
    if (!list || list->request != sequence) {
        return;  // of an older request
    }
    if (auto route = parseRoute(value)) {
        list->routes.push_back(std::move(*route));
        self.observer_.objectChanged();
    }
}

PipeWireDefaults::PipeWireDefaults(pw_registry* registry, std::uint32_t id, PipeWireObjectObserver& observer)
    : id_(id),
      observer_(observer),
      proxy_(pw_registry_bind(registry, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0)) {
    static const pw_metadata_events events{.version = PW_VERSION_METADATA_EVENTS, .property = onProperty};
    proxy_.listen(&events, this);
    observer_.objectAsked();
}

std::string PipeWireDefaults::nodeName(std::string_view key) const {
    return nameInMetadata(rawValue(values_, key));
}

std::map<AVMediaType, std::string> PipeWireDefaults::sourceNames() const {
    std::map<AVMediaType, std::string> names;
    for (const auto& [mediaType, key] : {std::pair(AVMediaType::audio, "default.audio.source"),
                                         std::pair(AVMediaType::video, "default.video.source")}) {
        if (std::string name = nodeName(key); !name.empty()) {
            names.emplace(mediaType, std::move(name));
        }
    }
    return names;
}

int PipeWireDefaults::onProperty(void* data, std::uint32_t subject, const char* key, const char*, const char* value) {
    auto& self = *static_cast<PipeWireDefaults*>(data);
    if (subject != PW_ID_CORE) {
        return 0;  // what is said of single nodes
    }
    if (!key) {
        self.values_.clear();
    } else if (!value) {
        self.values_.erase(key);
    } else {
        self.values_.insert_or_assign(key, value);
    }
    self.observer_.objectChanged();
    return 0;
}

}  // namespace zorvane
