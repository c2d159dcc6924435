#include "Zorvane/Platform/Linux/X11/Input/KeyboardWatch.hpp"

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-x11.h>

// The protocol's header has a field of this name, which is a keyword here.
#ifdef __clang__
#pragma clang diagnostic ignored "-Wkeyword-macro"
#endif
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

#include <utility>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

/// What both kinds of event begin with.
struct KeyboardEvent {
    std::uint8_t responseType;
    std::uint8_t kind;
    std::uint16_t sequence;
    xcb_timestamp_t time;
};

/// A keyboard that takes over brings its layout along: the server says so some milliseconds after the time of the first
/// key that is pressed there.
constexpr std::uint32_t longestDelayOfWord = 10;

bool hasKeyboardExtension(xcb_connection_t* connection) {
    return xkb_x11_setup_xkb_extension(connection, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                       XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr) != 0;
}

}  // namespace

std::unique_ptr<KeyboardLayout> readKeyboardLayout(const XConnection& connection) {
    const auto context = makeXkbContext();
    if (!context || !hasKeyboardExtension(connection.get())) {
        return nullptr;
    }
    const auto device = xkb_x11_get_core_keyboard_device_id(connection.get());
    XkbHandle<xkb_keymap> keymap(
        xkb_x11_keymap_new_from_device(context.get(), connection.get(), device, XKB_KEYMAP_COMPILE_NO_FLAGS));
    return keymap ? std::make_unique<KeyboardLayout>(std::move(keymap)) : nullptr;
}

std::vector<std::uint8_t> readHeldKeys(const XConnection& connection) {
    const auto query = xcb_query_keymap(connection.get());
    const XReply<xcb_query_keymap_reply_t> reply(xcb_query_keymap_reply(connection.get(), query, nullptr));
    std::vector<std::uint8_t> held;
    for (unsigned key = 0; reply && key < 8 * sizeof reply->keys; ++key) {
        if (reply->keys[key / 8] >> key % 8 & 1) {
            held.push_back(static_cast<std::uint8_t>(key));
        }
    }
    return held;
}

KeyboardWatch::KeyboardWatch(const XConnection& connection) {
    if (!hasKeyboardExtension(connection.get())) {
        return;
    }
    firstEvent_ = xcb_get_extension_data(connection.get(), &xcb_xkb_id)->first_event;
    constexpr std::uint16_t events = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t allParts = 0xFF;
    xcb_xkb_select_events(connection.get(), XCB_XKB_ID_USE_CORE_KBD, events, 0, events, allParts, allParts, nullptr);
}

void KeyboardWatch::note(const xcb_generic_event_t& event) {
    if (firstEvent_ == 0 || event.response_type != firstEvent_) {
        return;
    }
    const auto& keyboardEvent = reinterpret_cast<const KeyboardEvent&>(event);
    if (!changedAt_ &&
        (keyboardEvent.kind == XCB_XKB_NEW_KEYBOARD_NOTIFY || keyboardEvent.kind == XCB_XKB_MAP_NOTIFY)) {
        changedAt_ = keyboardEvent.time - longestDelayOfWord;
    }
}

std::optional<std::uint32_t> KeyboardWatch::takeChange() {
    return std::exchange(changedAt_, std::nullopt);
}

}  // namespace zorvane
