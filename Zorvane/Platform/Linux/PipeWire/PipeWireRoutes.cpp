#include "Zorvane/Platform/Linux/PipeWire/PipeWireRoutes.hpp"

#include <spa/param/param.h>
#include <spa/param/route.h>
#include <spa/pod/iter.h>
#include <spa/utils/defs.h>

#include <algorithm>

namespace zorvane {
namespace {

const spa_pod* valueOf(const spa_pod* object, std::uint32_t key) {
    const spa_pod_prop* property = spa_pod_find_prop(object, nullptr, key);
    return property ? &property->value : nullptr;
}

PipeWireRoute::Availability availabilityOf(const spa_pod* route) {
    std::uint32_t availability = SPA_PARAM_AVAILABILITY_unknown;
    if (const spa_pod* value = valueOf(route, SPA_PARAM_ROUTE_available)) {
        spa_pod_get_id(value, &availability);
    }
    switch (availability) {
        case SPA_PARAM_AVAILABILITY_no:
            return PipeWireRoute::Availability::no;
        case SPA_PARAM_AVAILABILITY_yes:
            return PipeWireRoute::Availability::yes;
        default:
            return PipeWireRoute::Availability::unknown;
    }
}

/// An active route is for one node and names that, a possible one lists all that it is good for.
std::vector<int> cardDevicesOf(const spa_pod* route) {
    if (const spa_pod* value = valueOf(route, SPA_PARAM_ROUTE_device)) {
        std::int32_t device = 0;
        return spa_pod_get_int(value, &device) == 0 ? std::vector<int>{device} : std::vector<int>{};
    }
    const spa_pod* value = valueOf(route, SPA_PARAM_ROUTE_devices);
    if (!value || !spa_pod_is_array(value) || SPA_POD_ARRAY_VALUE_TYPE(value) != SPA_TYPE_Int ||
        SPA_POD_ARRAY_VALUE_SIZE(value) != sizeof(std::int32_t)) {
        return {};
    }
    std::uint32_t count = 0;
    const auto* devices = static_cast<const std::int32_t*>(spa_pod_get_array(value, &count));
    return {devices, devices + count};
}

bool feeds(const PipeWireRoute& route, int cardDevice) {
    return route.direction == PipeWireRoute::Direction::input && std::ranges::count(route.cardDevices, cardDevice) > 0;
}

bool isUnavailable(const PipeWireRoute& route) {
    return route.availability == PipeWireRoute::Availability::no;
}

}  // namespace

std::optional<PipeWireRoute> parseRoute(const spa_pod* parameter) {
    if (!parameter || !spa_pod_is_object_type(parameter, SPA_TYPE_OBJECT_ParamRoute)) {
        return std::nullopt;
    }
    const spa_pod* value = valueOf(parameter, SPA_PARAM_ROUTE_direction);
    std::uint32_t direction = 0;
    if (!value || spa_pod_get_id(value, &direction) < 0) {
        return std::nullopt;
    }
    using enum PipeWireRoute::Direction;
    return PipeWireRoute{.direction = direction == SPA_DIRECTION_INPUT ? input : output,
                         .availability = availabilityOf(parameter),
                         .cardDevices = cardDevicesOf(parameter)};
}

bool PipeWireRoutes::isCutOff(int cardDevice) const {
    const auto feedsIt = [cardDevice](const PipeWireRoute& route) { return feeds(route, cardDevice); };
    const auto route = std::ranges::find_if(active, feedsIt);
    if (route != active.end()) {
        return isUnavailable(*route);
    }
    const auto isAlternative = [&](const PipeWireRoute& other) { return feedsIt(other) && !isUnavailable(other); };
    return std::ranges::any_of(possible, feedsIt) && std::ranges::none_of(possible, isAlternative);
}

}  // namespace zorvane
