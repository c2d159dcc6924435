#include "Zorvane/Platform/Linux/X11/WindowEvents.hpp"

#include <xcb/xcb.h>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

template <class Event>
const Event& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const Event&>(event);
}

/// X11 gives the place of the border's corner, but the size without the border.
template <class Event>
WindowPlace placeIn(const Event& event) {
    return {{event.x, event.y, event.width + 2 * event.border_width, event.height + 2 * event.border_width},
            event.border_width};
}

bool isOfServer(const XConnection& connection, xcb_window_t window) {
    const std::uint32_t ofProgram = ~xcb_get_setup(connection.get())->resource_id_mask;
    return (window & ofProgram) == (connection.root() & ofProgram);
}

void dispatchChildEvent(const xcb_generic_event_t& event, WindowEventHandler& handler) {
    switch (event.response_type) {  // what a program sent has one bit more
        case XCB_CREATE_NOTIFY: {
            const auto& created = as<xcb_create_notify_event_t>(event);
            return handler.created(created.window, placeIn(created));
        }
        case XCB_DESTROY_NOTIFY:
            return handler.destroyed(as<xcb_destroy_notify_event_t>(event).window);
        case XCB_MAP_NOTIFY:
            return handler.mapped(as<xcb_map_notify_event_t>(event).window);
        case XCB_UNMAP_NOTIFY:
            return handler.unmapped(as<xcb_unmap_notify_event_t>(event).window);
        case XCB_CONFIGURE_NOTIFY: {
            const auto& configured = as<xcb_configure_notify_event_t>(event);
            return handler.configured(configured.window, placeIn(configured), configured.above_sibling);
        }
        case XCB_GRAVITY_NOTIFY: {
            const auto& moved = as<xcb_gravity_notify_event_t>(event);
            return handler.moved(moved.window, moved.x, moved.y);
        }
        case XCB_CIRCULATE_NOTIFY: {
            const auto& circulated = as<xcb_circulate_notify_event_t>(event);
            return circulated.place == XCB_PLACE_ON_TOP ? handler.raised(circulated.window)
                                                        : handler.lowered(circulated.window);
        }
        default:
            return;
    }
}

/// The old parent's watchers are told, and the new one's.
void dispatchReparenting(const xcb_reparent_notify_event_t& event, std::uint32_t root, WindowEventHandler& handler) {
    if (event.event == root) {
        return handler.reparented(event.window, event.parent);
    }
    handler.familyChanged(event.event);
    if (event.parent != event.event) {
        handler.familyChanged(event.parent);
    }
}

}  // namespace

void selectWindowEvents(XConnection& connection) {
    const auto query = xcb_get_window_attributes(connection.get(), connection.root());
    const XReply<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(connection.get(), query, nullptr));
    const std::uint32_t events =
        (reply ? reply->your_event_mask : 0U) | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection.get(), connection.root(), XCB_CW_EVENT_MASK, &events);
}

void dispatchWindowEvent(const xcb_generic_event_t& event, const XConnection& connection, WindowEventHandler& handler) {
    if (event.response_type == XCB_PROPERTY_NOTIFY) {
        const auto& change = as<xcb_property_notify_event_t>(event);
        if (change.window != connection.root()) {
            handler.propertyChanged(change.window, change.atom);
        }
        return;
    }
    // These all begin with the window whose watchers are told, the parent, and then the window itself.
    const auto& any = as<xcb_map_notify_event_t>(event);
    if (event.response_type == XCB_REPARENT_NOTIFY) {
        dispatchReparenting(as<xcb_reparent_notify_event_t>(event), connection.root(), handler);
    } else if (any.event == connection.root() && !isOfServer(connection, any.window)) {
        dispatchChildEvent(event, handler);
    }
}

}  // namespace zorvane
