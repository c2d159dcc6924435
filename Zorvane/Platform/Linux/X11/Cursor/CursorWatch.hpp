// Hears from the X server that pointer or cursor change.
#pragma once

namespace zorvane {

class XConnection;

/// Selects the events on a connection that has no other ones. What they say doesn't matter. One thread uses a watch.
///
/// The pointer's motion shows as raw events, whoever else listens to it. A jump that a program makes it do shows as
/// plain motion, which does not come through a window whose own program listens for motion.
class CursorWatch {
  public:
    explicit CursorWatch(XConnection& connection);

    /// Whether the server can tell of the pointer at all.
    bool hearsPointer() const;

    /// Takes what has arrived; true if there was anything. Doesn't wait.
    bool take();

  private:
    XConnection& connection_;
};

}  // namespace zorvane
