// Where a screen stream's pixels come from.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>

#include "Zorvane/Platform/Linux/X11/ScreenArea.hpp"

namespace zorvane {

/// What has changed since the last look.
struct ScreenChanges {
    /// Root window coordinates; encloses all that was drawn. Empty if that is out of sight: it must be dealt with all
    /// the same, or the source tells of nothing more.
    std::optional<PixelRect> damage;
    bool pointer = false;  ///< the cursor moved or changed its look
    bool layout = false;   ///< displays came, went or changed

    void addDamage(const PixelRect& rect) { damage = damage ? enclosing(*damage, rect) : rect; }
    bool any() const { return damage || pointer || layout; }
};

/// A drawable of the server that shows an area of the screen, and the knowledge of when that changes. It stays there as
/// long as the source. One thread uses a source.
class ScreenSource {
  public:
    /// Where in a drawable the picture's top left corner lies.
    struct Place {
        std::uint32_t drawable = 0;
        std::int32_t x = 0;
        std::int32_t y = 0;
    };

    virtual ~ScreenSource() = default;

    virtual Place place() const = 0;

    /// Takes an event, of whatever kind, and adds what it means to `changes`. To be given all events in the order in
    /// which they came. May wait for the server's answers.
    virtual void note(const xcb_generic_event_t& event, ScreenChanges& changes) = 0;

    /// Catches up with what the events meant. True if the server was waited for, so that events may have come.
    virtual bool settle() { return false; }

    /// Brings the drawable up to date. Changes up to the moment at which the server comes to this are dealt with; it
    /// tells of later ones anew. Doesn't wait.
    virtual void refresh() = 0;

    /// Whether the drawable may have shown more than it should since it was last brought up to date. Known for sure of
    /// what was read meanwhile once all events up to the reading are noted.
    virtual bool showedTooMuch() const { return false; }
};

}  // namespace zorvane
