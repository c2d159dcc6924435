// Hears from the X server what changes on its screen.
#pragma once

#include <cstdint>
#include <optional>

#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"

namespace zorvane {

class XConnection;

/// What has changed since the last look.
struct ScreenChanges {
    std::optional<PixelRect> damage;  ///< root window coordinates; encloses all that was drawn
    bool pointer = false;             ///< the cursor moved or changed its look
    bool layout = false;              ///< displays came, went or changed

    bool any() const { return damage || pointer || layout; }
};

/// Selects the events that wake a capture: from its making on, every change is told of. A still screen with a still
/// pointer sends none.
///
/// The pointer's motion shows as raw events, whoever else listens to it. A jump that a program makes it do shows as
/// plain motion, which does not come through a window whose own program listens for motion; such a jump shows with the
/// next picture. One thread uses a watch.
class ScreenWatch {
  public:
    /// Throws `NSError` if the server lacks an extension that is needed.
    ScreenWatch(XConnection& connection, bool watchesPointer);

    /// Takes what has arrived. Doesn't wait.
    ScreenChanges take();

    /// Damage up to the moment at which the server comes to this request is dealt with; it tells of further damage
    /// anew. Doesn't wait.
    void acknowledgeDamage();

  private:
    void watchDamage();
    void watchPointer();
    void watchLayout();
    void forgetTheBeginning();

    XConnection& connection_;
    std::uint32_t damage_ = 0;
};

}  // namespace zorvane
