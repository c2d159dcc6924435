// The expansion of schema items into recorders.
#pragma once

#include "Zorvane/Internal/Recorder.hpp"
#include "Zorvane/Internal/RecorderContext.hpp"
#include "Zorvane/Internal/SchemaItem.hpp"

namespace zorvane {

/// Makes the recorders of one item, in the order in which their files stand in the manifest. Throws if the source can't
/// be recorded; those already made are dropped. The expansions of several items run in parallel.
Task<Recorders> createRecorders(InteralSchemaItem item, RecorderContext context);

}  // namespace zorvane
