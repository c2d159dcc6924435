#include "Zorvane/Platform/Linux/X11/Input/InputWatch.hpp"

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <utility>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"

namespace zorvane {

InputWatch::InputWatch(std::shared_ptr<XConnection> connection) : connection_(std::move(connection)) {}

void InputWatch::arm() {
    select(XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE |
           XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE |
           XCB_INPUT_XI_EVENT_MASK_RAW_MOTION | XCB_INPUT_XI_EVENT_MASK_MOTION);
}

void InputWatch::disarm() {
    select(0);
}

void InputWatch::select(std::uint32_t events) {
    if (!connection_->extensions().xinput.isAtLeast(2, 0)) {
        return;
    }
    const struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1}, events};
    xcb_input_xi_select_events(connection_->get(), connection_->root(), 1, &selection.head);
    xcb_flush(connection_->get());
}

}  // namespace zorvane
