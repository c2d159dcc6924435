// The picture that stands for an application without one.
#pragma once

#include "Zorvane/Platform/AppKit/NSImage.hpp"

namespace zorvane {

/// An empty window, 64 by 64 pixels.
NSImage defaultApplicationIcon();

}  // namespace zorvane
