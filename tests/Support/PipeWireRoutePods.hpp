// Routes in the form in which PipeWire sends them.
#pragma once

#include <spa/param/param.h>
#include <spa/param/route.h>
#include <spa/pod/builder.h>
#include <spa/utils/defs.h>

#include <array>
#include <cstddef>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireRoutes.hpp"

namespace zorvane {

/// The parameter `SPA_PARAM_Route` has one card device, `SPA_PARAM_EnumRoute` a list of them.
class RoutePod {
  public:
    RoutePod(const PipeWireRoute& route, std::uint32_t parameter) {
        spa_pod_builder builder = SPA_POD_BUILDER_INIT(bytes_.data(), static_cast<std::uint32_t>(bytes_.size()));
        spa_pod_frame object;
        spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_ParamRoute, parameter);
        spa_pod_builder_prop(&builder, SPA_PARAM_ROUTE_direction, 0);
        const bool isInput = route.direction == PipeWireRoute::Direction::input;
        spa_pod_builder_id(&builder, isInput ? SPA_DIRECTION_INPUT : SPA_DIRECTION_OUTPUT);
        spa_pod_builder_prop(&builder, SPA_PARAM_ROUTE_available, 0);
        spa_pod_builder_id(&builder, static_cast<std::uint32_t>(route.availability));
        if (parameter == SPA_PARAM_Route) {
            spa_pod_builder_prop(&builder, SPA_PARAM_ROUTE_device, 0);
            spa_pod_builder_int(&builder, route.cardDevices.at(0));
        } else {
            spa_pod_builder_prop(&builder, SPA_PARAM_ROUTE_devices, 0);
            spa_pod_builder_array(&builder, sizeof(int), SPA_TYPE_Int,
                                  static_cast<std::uint32_t>(route.cardDevices.size()), route.cardDevices.data());
        }
        pod_ = static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
    }

    const spa_pod* get() const { return pod_; }

  private:
    alignas(8) std::array<std::byte, 512> bytes_;
    const spa_pod* pod_;
};

}  // namespace zorvane
