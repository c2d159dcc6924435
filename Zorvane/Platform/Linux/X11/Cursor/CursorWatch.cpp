#include "Zorvane/Platform/Linux/X11/Cursor/CursorWatch.hpp"

#include <xcb/xcb.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {

CursorWatch::CursorWatch(XConnection& connection) : connection_(connection) {
    if (connection.extensions().xfixes.isAtLeast(1, 0)) {
        xcb_xfixes_select_cursor_input(connection.get(), connection.root(),
                                       XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
    }
    if (hearsPointer()) {
        const struct {
            xcb_input_event_mask_t head;
            std::uint32_t mask;
        } selection{{.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1},
                    XCB_INPUT_XI_EVENT_MASK_RAW_MOTION | XCB_INPUT_XI_EVENT_MASK_MOTION |
                        XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE};
        xcb_input_xi_select_events(connection.get(), connection.root(), 1, &selection.head);
    }
    xcb_flush(connection.get());
}

bool CursorWatch::hearsPointer() const {
    return connection_.extensions().xinput.isAtLeast(2, 0);
}

bool CursorWatch::take() {
    bool isAny = false;
    while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        isAny = true;
    }
    return isAny;
}

}  // namespace zorvane
