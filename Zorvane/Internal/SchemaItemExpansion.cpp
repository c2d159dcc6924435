#include "Zorvane/Internal/SchemaItemExpansion.hpp"

#include <fmt/format.h>

#include <string_view>
#include <utility>

#include "Zorvane/Internal/Recorders/AudioRecorderExpansion.hpp"
#include "Zorvane/Internal/Recorders/ScreenRecorderExpansion.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

Task<Recorders> createRecorders(CustomSchemaItem item, RecorderContext context) {
    co_return item.makeRecorders(context.bundleURL, context.logger, context.onAbort);
}

Task<Recorders> refuse(std::string_view source) {
    throw ZVError::invalidConfiguration(fmt::format("This version can't record {} yet.", source));
    co_return Recorders();
}

Task<Recorders> createRecorders(WebcamSchemaItem, RecorderContext) {
    return refuse("webcams");
}

Task<Recorders> createRecorders(AppleDeviceStaticOrientationItem, RecorderContext) {
    return refuse("connected phones and tablets");
}

}  // namespace

Task<Recorders> createRecorders(InteralSchemaItem item, RecorderContext context) {
    auto expand = [&context](const auto& payload) { return createRecorders(payload, std::move(context)); };
    return std::visit(expand, item.payload());
}

}  // namespace zorvane
