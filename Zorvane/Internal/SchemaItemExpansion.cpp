#include "Zorvane/Internal/SchemaItemExpansion.hpp"

#include <utility>

#include "Zorvane/Internal/Recorders/AudioRecorderExpansion.hpp"
#include "Zorvane/Internal/Recorders/DeviceRecorderExpansion.hpp"
#include "Zorvane/Internal/Recorders/ScreenRecorderExpansion.hpp"

namespace zorvane {
namespace {

Task<Recorders> createRecorders(CustomSchemaItem item, RecorderContext context) {
    co_return item.makeRecorders(context.bundleURL, context.logger, context.onAbort);
}

}  // namespace

Task<Recorders> createRecorders(InteralSchemaItem item, RecorderContext context) {
    auto expand = [&context](const auto& payload) { return createRecorders(payload, std::move(context)); };
    return std::visit(expand, item.payload());
}

}  // namespace zorvane
