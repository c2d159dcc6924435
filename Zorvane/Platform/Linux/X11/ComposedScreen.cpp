#include "Zorvane/Platform/Linux/X11/ComposedScreen.hpp"

#include <xcb/xcb.h>

#include <utility>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"

namespace zorvane {
namespace {

/// Before the first member that uses one.
const XConnection& requireExtensions(const XConnection& connection) {
    const XExtensions& offered = connection.extensions();
    connection.requireExtension(offered.damage.isPresent, "DAMAGE");
    connection.requireExtension(offered.composite.isAtLeast(0, 2), "COMPOSITE 0.2");
    connection.requireExtension(offered.render.isAtLeast(0, 10), "RENDER 0.10");
    connection.requireExtension(offered.xfixes.isAtLeast(2, 0), "XFIXES 2");
    return connection;
}

}  // namespace

ComposedScreen::ComposedScreen(XConnection& connection, const SCContentFilter& filter, const ScreenArea& area)
    : connection_(connection),
      area_(area.visible.movedBy(area.originX, area.originY)),
      formats_(requireExtensions(connection)),
      canvas_(connection, area, formats_.ofVisual(connection.screen().root_visual).number,
              filter.showsDesktop() ? ScreenCanvas::Behind::desktop : ScreenCanvas::Behind::black),
      outdated_(area_),
      windows_(connection, filter, formats_, *this) {}

void ComposedScreen::note(const xcb_generic_event_t& event, ScreenChanges& changes) {
    if (isNewBackground(event)) {
        canvas_.backdrop()->read();
        lookChanged(area_);
    } else {
        windows_.note(event);
    }
    if (const auto damage = std::exchange(found_.damage, std::nullopt)) {
        changes.addDamage(*damage);
    }
}

bool ComposedScreen::isNewBackground(const xcb_generic_event_t& event) const {
    if (event.response_type != XCB_PROPERTY_NOTIFY || !canvas_.backdrop()) {
        return false;
    }
    const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    return property.window == connection_.root() && canvas_.backdrop()->isToldBy(property.atom);
}

void ComposedScreen::lookChanged(const PixelRect& rect) {
    const PixelRect seen = intersection(rect, area_);
    if (!seen.isEmpty()) {
        outdated_ = enclosing(outdated_, seen);
        found_.addDamage(seen);
    }
}

void ComposedScreen::paintedOutOfSight() {
    found_.addDamage({});
}

void ComposedScreen::refresh() {
    windows_.acknowledgePainting();
    if (!outdated_.isEmpty()) {
        canvas_.draw(windows_.stack(), std::exchange(outdated_, {}));
    }
}

}  // namespace zorvane
