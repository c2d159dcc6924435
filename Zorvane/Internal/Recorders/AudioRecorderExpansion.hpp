// Expands the schema items of microphones and of the system's sound into their recorders.
#pragma once

#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/RecorderContext.hpp"
#include "Zorvane/Internal/SchemaItem.hpp"

namespace zorvane {

/// One recorder each. They throw what its construction throws, and the last one what finding its applications throws.
Task<Recorders> createRecorders(MicrophoneFileSchemaItem item, RecorderContext context);
Task<Recorders> createRecorders(MicrophoneStreamSchemaItem item, RecorderContext context);
Task<Recorders> createRecorders(SystemAudioSchemaItem item, RecorderContext context);

}  // namespace zorvane
