#include "tests/Support/X11TestUser.hpp"

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <cstdlib>
#include <stdexcept>

namespace zorvane {

X11TestUser::X11TestUser() : connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_)) {
        xcb_disconnect(connection_);
        throw std::runtime_error("the test user can't reach the X server");
    }
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
}

X11TestUser::~X11TestUser() {
    xcb_disconnect(connection_);
}

X11TestUser& X11TestUser::fake(std::uint8_t type, std::uint8_t detail, std::int16_t x, std::int16_t y) {
    xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, root_, x, y, 0);
    return *this;
}

X11TestUser& X11TestUser::moveTo(std::int16_t x, std::int16_t y) {
    return fake(XCB_MOTION_NOTIFY, 0, x, y);
}

X11TestUser& X11TestUser::warpTo(std::int16_t x, std::int16_t y) {
    xcb_warp_pointer(connection_, XCB_NONE, root_, 0, 0, 0, 0, x, y);
    return *this;
}

X11TestUser& X11TestUser::press(std::uint8_t button) {
    return fake(XCB_BUTTON_PRESS, button);
}

X11TestUser& X11TestUser::release(std::uint8_t button) {
    return fake(XCB_BUTTON_RELEASE, button);
}

X11TestUser& X11TestUser::keyDown(std::uint8_t key) {
    return fake(XCB_KEY_PRESS, key);
}

X11TestUser& X11TestUser::keyUp(std::uint8_t key) {
    return fake(XCB_KEY_RELEASE, key);
}

X11TestUser& X11TestUser::relabel(std::uint8_t key, char letter) {
    const auto keysym = static_cast<xcb_keysym_t>(letter);  // that of a letter is its code
    xcb_change_keyboard_mapping(connection_, 1, key, 1, &keysym);
    return *this;
}

X11TestUser& X11TestUser::grabAll() {
    constexpr std::uint8_t reportsNothing = 0;
    const auto keyboard = xcb_grab_keyboard(connection_, reportsNothing, root_, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
                                            XCB_GRAB_MODE_ASYNC);
    const auto pointer = xcb_grab_pointer(connection_, reportsNothing, root_, 0, XCB_GRAB_MODE_ASYNC,
                                          XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME);
    auto* keyboardReply = xcb_grab_keyboard_reply(connection_, keyboard, nullptr);
    auto* pointerReply = xcb_grab_pointer_reply(connection_, pointer, nullptr);
    const bool isGrabbed = keyboardReply && keyboardReply->status == XCB_GRAB_STATUS_SUCCESS && pointerReply &&
                           pointerReply->status == XCB_GRAB_STATUS_SUCCESS;
    std::free(keyboardReply);
    std::free(pointerReply);
    if (!isGrabbed) {
        throw std::runtime_error("the X server didn't let the test user grab mouse and keyboard");
    }
    return *this;
}

void X11TestUser::act() {
    std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

}  // namespace zorvane
