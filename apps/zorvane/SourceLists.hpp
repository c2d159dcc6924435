// The library's lists of sources, by kind.
#pragma once

#include <functional>

#include "SourceKind.hpp"
#include "SourceRow.hpp"
#include "Zorvane/ZVTask.hpp"

namespace zorvane::cli {

/// What there is now. Blocks while the desktop answers.
SourceRows currentSources(SourceKind kind);

/// Calls `listed` with what there is now, and with the whole list after each change, on one thread at a time, until the
/// task is cancelled (`ZVCancelled`).
ZVTask<> followSources(SourceKind kind, std::function<void(SourceRows rows)> listed);

}  // namespace zorvane::cli
