// Hears from the X server what changes on its screen.
#pragma once

#include "Zorvane/Platform/Linux/X11/ScreenSource.hpp"

namespace zorvane {

class XConnection;

/// Selects the events that wake a capture, but for those of the source of its pixels, and hands out all that come. From
/// its making on, every change is told of. A still screen with a still pointer sends none.
///
/// The pointer's motion shows as raw events, whoever else listens to it. A jump that a program makes it do shows as
/// plain motion, which does not come through a window whose own program listens for motion; such a jump shows with the
/// next picture. One thread uses a watch.
class ScreenWatch {
  public:
    /// Throws `NSError` if the server lacks an extension that is needed.
    ScreenWatch(XConnection& connection, bool watchesPointer);

    /// Takes what has arrived, and lets `source` catch up with it.
    ScreenChanges take(ScreenSource& source);

  private:
    void watchPointer();
    void watchLayout();
    void note(const xcb_generic_event_t& event, ScreenChanges& changes) const;

    XConnection& connection_;
};

}  // namespace zorvane
