// Somebody at the mouse and the keyboard of a virtual desktop.
#pragma once

namespace zorvane {

class VirtualDesktop;

/// From now on, in rounds of six seconds of which the last two are still: moves the pointer about the upper right of a
/// display of 1920 by 1080, drags something, and types "Hi" and the return key.
void playUser(VirtualDesktop& desktop);

}  // namespace zorvane
