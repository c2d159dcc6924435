#include "Zorvane/Platform/Linux/X11/ScreenWatch.hpp"

#include <xcb/randr.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
ScreenWatch::ScreenWatch(XConnection& connection, bool watchesPointer) : connection_(connection) {
    connection.requireExtension(connection.extensions().xfixes.isAtLeast(2, 0), "XFIXES 2");
    if (watchesPointer) {
        watchPointer();
    }
    watchLayout();
}

void ScreenWatch::watchPointer() {
    xcb_xfixes_select_cursor_input(connection_.get(), connection_.root(), XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
    if (!connection_.extensions().xinput.isAtLeast(2, 0)) {
        return;
    }
    const struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1},
                XCB_INPUT_XI_EVENT_MASK_RAW_MOTION | XCB_INPUT_XI_EVENT_MASK_MOTION};
    xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &selection.head);
}

/// The root window is told of monitors that the user defines, RANDR's own events of those that the hardware makes.
void ScreenWatch::watchLayout() {
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_.get(), connection_.root(), XCB_CW_EVENT_MASK, &events);
    if (connection_.extensions().randr.isPresent) {
        xcb_randr_select_input(connection_.get(), connection_.root(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE);
    }
}

void ScreenWatch::note(const xcb_generic_event_t& event, ScreenChanges& changes) const {
    constexpr std::uint8_t sentByClient = 0x80;
    const XExtensions& offered = connection_.extensions();
    const auto type = static_cast<std::uint8_t>(event.response_type & ~sentByClient);
    if (type == XCB_GE_GENERIC || type == offered.xfixes.firstEvent + XCB_XFIXES_CURSOR_NOTIFY) {
        changes.pointer = true;
    } else if (type == XCB_CONFIGURE_NOTIFY) {
        const auto& configured = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
        changes.layout |= configured.window == connection_.root();
    } else if (offered.randr.isPresent && type >= offered.randr.firstEvent) {
        const int randrEvent = type - offered.randr.firstEvent;
        changes.layout |= randrEvent == XCB_RANDR_SCREEN_CHANGE_NOTIFY || randrEvent == XCB_RANDR_NOTIFY;
    }
}

ScreenChanges ScreenWatch::take(ScreenSource& source) {
    ScreenChanges changes;
    do {
        while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
            note(*event, changes);
            source.note(*event, changes);
        }
    } while (source.settle());
    return changes;
}

}  // namespace zorvane
