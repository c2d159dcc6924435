// The top-level windows of a screen, as events tell of them.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Zorvane/Platform/Linux/X11/PictureFormats.hpp"
#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"
#include "Zorvane/Platform/Linux/X11/Veil.hpp"
#include "Zorvane/Platform/Linux/X11/WindowContent.hpp"

namespace zorvane {

/// Whether a filter lets a window through. Nobody knows before the window has been identified.
enum class WindowVerdict : std::uint8_t { unknown, shown, leftOut };

/// One child of the root window.
struct StackedWindow {
    std::uint32_t id = 0;
    PixelRect bounds;         ///< root window coordinates, with the border
    std::int32_t border = 0;  ///< its width
    bool takesInputOnly = false;
    bool isMapped = false;  ///< and takes more than input
    WindowVerdict verdict = WindowVerdict::unknown;
    PictureFormat format;
    Veil veil;                  ///< the server paints borders at once, so it covers none
    bool hasNewPixmap = false;  ///< what `content` holds is no longer what the window has
    bool hasNewShape = false;
    std::uint32_t trustsPaintingFrom = 0;  ///< what is told of before this request of ours lifts no veil
    bool wasPainted = false;               ///< since the last acknowledgement
    std::unique_ptr<WindowContent> content;

    PixelRect inside() const {
        return {bounds.x + border, bounds.y + border, bounds.width - 2 * border, bounds.height - 2 * border};
    }
    bool isVisible() const { return isMapped && verdict == WindowVerdict::shown; }
    /// Hides all that lies behind it.
    bool isOpaque() const { return isVisible() && content->hasPicture() && !format.hasAlpha && !content->shape(); }
};

/// The windows back to front. Made to follow what the server does, whatever order events name windows in that have gone
/// by now.
class WindowStack {
  public:
    using Windows = std::vector<std::unique_ptr<StackedWindow>>;

    const Windows& windows() const { return windows_; }
    /// Null if there is none.
    StackedWindow* find(std::uint32_t id) const;

    /// On top of all others. Replaces one with the same number.
    StackedWindow& add(std::uint32_t id);
    void remove(std::uint32_t id);
    /// Right above `sibling`, or at the bottom if there is no such window. False if it was there before.
    bool placeAbove(std::uint32_t id, std::uint32_t sibling);
    /// False if it was on top before.
    bool raise(std::uint32_t id);

    enum class Others : std::uint8_t { inFront, anywhere };
    /// Veils what other windows, which aren't shown, may have left in a window's new pixmap: those in front, if the
    /// window was on the screen before; else all.
    void veil(StackedWindow& window, Others others) const;
    /// Whether other windows hide this part of the root window, in which `window` lies.
    bool isOutOfSight(const StackedWindow& window, const PixelRect& rect) const;

  private:
    Windows::const_iterator position(std::uint32_t id) const;

    Windows windows_;
};

}  // namespace zorvane
