// Makes the elements of the side file. Pure functions.
#pragma once

#include "Zorvane/Internal/Recorders/CursorRecorder/CursorTimeline.hpp"
#include "Zorvane/Platform/CoreGraphics/CGEvent.hpp"
#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/ZVInputEvent.hpp"

namespace zorvane {

/// For the types of the mouse only. `crop` is the recorded area in global coordinates, and not empty.
ZVMouseEvent createZVMouseEvent(const CGEvent& cgEvent, const ZVTime& time, ZVCursorType cursorType,
                                const CGRect& crop);

/// Throws a `ZVError` for another type than a key's, and for a key of text that no user interface makes anything of.
ZVKeyboardEvent createZVKeyboardEvent(const CGEvent& cgEvent, const ZVTime& time);

/// With the pointer where it was when the cursor changed.
ZVMouseEvent createCursorChangedEvent(const CursorTimeline::Observation& observation, const ZVTime& time,
                                      const CGRect& crop);

}  // namespace zorvane
