// What a recording of a display leaves out.
#pragma once

#include <set>

#include "Zorvane/Internal/Recorders/ScreenContentFilter.hpp"
#include "Zorvane/ZVSchemaItem.hpp"

namespace zorvane {

/// The filter options of a display with these exclusions: excluded processes, and windows that are excluded although
/// their process isn't. For the recording indicator it reads the desktop's applications and windows, and may block for
/// the first look at them; a desktop without an indicator has none to leave out.
DisplayFilterOptions displayFilterOptions(const std::set<ZVScreenRecordingExcludeOptions>& excluding);

}  // namespace zorvane
