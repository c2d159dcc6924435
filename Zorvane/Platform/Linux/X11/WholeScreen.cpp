#include "Zorvane/Platform/Linux/X11/WholeScreen.hpp"

#include <xcb/damage.h>
#include <xcb/xcb.h>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {

WholeScreen::WholeScreen(XConnection& connection, const ScreenArea& area) : connection_(connection), area_(area) {
    connection.requireExtension(connection.extensions().damage.isPresent, "DAMAGE");
    damage_ = xcb_generate_id(connection.get());
    const auto creation =
        xcb_damage_create_checked(connection.get(), damage_, connection.root(), XCB_DAMAGE_REPORT_LEVEL_BOUNDING_BOX);
    // Waits, so that the first word, that the whole screen is damaged, comes before the first picture.
    const XReply<xcb_generic_error_t> error(xcb_request_check(connection.get(), creation));
    connection.requireExtension(!error, "DAMAGE");
}

ScreenSource::Place WholeScreen::place() const {
    return {connection_.root(), area_.originX, area_.originY};
}

void WholeScreen::note(const xcb_generic_event_t& event, ScreenChanges& changes) {
    if (event.response_type == connection_.extensions().damage.firstEvent + XCB_DAMAGE_NOTIFY) {
        const auto& area = reinterpret_cast<const xcb_damage_notify_event_t&>(event).area;
        changes.addDamage({area.x, area.y, area.width, area.height});
    }
}

void WholeScreen::refresh() {
    xcb_damage_subtract(connection_.get(), damage_, XCB_NONE, XCB_NONE);
}

}  // namespace zorvane
