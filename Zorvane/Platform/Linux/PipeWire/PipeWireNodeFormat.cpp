#include "Zorvane/Platform/Linux/PipeWire/PipeWireNodeFormat.hpp"

#include <spa/param/format.h>
#include <spa/pod/iter.h>

namespace zorvane {
namespace {

/// The value, which stands first where there is a choice.
std::uint32_t numberIn(const spa_pod* object, std::uint32_t key) {
    const spa_pod_prop* property = spa_pod_find_prop(object, nullptr, key);
    if (!property) {
        return 0;
    }
    std::uint32_t count = 0;
    std::uint32_t choice = 0;
    const spa_pod* value = spa_pod_get_values(&property->value, &count, &choice);
    std::int32_t number = 0;
    const bool isNumber = count > 0 && value->type == SPA_TYPE_Int && value->size == sizeof number;
    if (isNumber) {
        number = *static_cast<const std::int32_t*>(SPA_POD_BODY_CONST(value));
    }
    return number > 0 ? static_cast<std::uint32_t>(number) : 0;
}

}  // namespace

PipeWireNodeFormat parseNodeFormat(const spa_pod* parameter) {
    if (!parameter || !spa_pod_is_object_type(parameter, SPA_TYPE_OBJECT_Format)) {
        return {};
    }
    return {.rate = numberIn(parameter, SPA_FORMAT_AUDIO_rate),
            .channelCount = numberIn(parameter, SPA_FORMAT_AUDIO_channels)};
}

}  // namespace zorvane
