// Expands the schema items of webcams and phones into their recorders.
#pragma once

#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/RecorderContext.hpp"
#include "Zorvane/Internal/SchemaItem.hpp"

namespace zorvane {

/// One recorder each. They throw what its construction throws.
Task<Recorders> createRecorders(WebcamSchemaItem item, RecorderContext context);
Task<Recorders> createRecorders(AppleDeviceStaticOrientationItem item, RecorderContext context);

}  // namespace zorvane
