// What cursors of a virtual desktop look like. Pure.
#pragma once

#include <string>

#include "Zorvane/Platform/AppKit/NSCursor.hpp"

namespace zorvane {

/// A cursor whose image consists of these bytes; none for a cursor without an image.
NSCursor virtualCursor(std::string image, CGPoint hotSpot = {4, 4}, CGSize size = {24, 24});

/// The theme's cursor of a type, which isn't `custom`. All have the hot spot and the size above.
NSCursor virtualCursor(ZVCursorType type);

}  // namespace zorvane
