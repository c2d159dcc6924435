// Expands the schema items of displays and window crops into their recorders.
#pragma once

#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/RecorderContext.hpp"
#include "Zorvane/Internal/SchemaItem.hpp"

namespace zorvane {

/// Resolves what is to be shown and makes the screen recorder, and behind it those of the side files: cursor and input,
/// frontmost window. Throws `ZVError` (invalid configuration) for an unknown display or window, and what the recorders
/// throw.
Task<Recorders> createRecorders(DisplaySchemaItem item, RecorderContext context);
Task<Recorders> createRecorders(WindowBasedCropSchemaItem item, RecorderContext context);

}  // namespace zorvane
