#include "Zorvane/Platform/Linux/X11/ScreenWatch.hpp"

#include <fmt/format.h>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include <algorithm>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

namespace zorvane {
namespace {

void require(bool isPresent, const XConnection& connection, const char* extension) {
    if (!isPresent) {
        throw NSError(SCStreamErrorDomain, static_cast<std::int64_t>(SCStreamErrorCode::failedToStart),
                      {fmt::format("The X server \"{}\" lacks the {} extension, without which its screen can't be "
                                   "recorded.",
                                   connection.name(), extension)});
    }
}

PixelRect enclosing(const std::optional<PixelRect>& a, const PixelRect& b) {
    if (!a) {
        return b;
    }
    const std::int32_t x = std::min(a->x, b.x);
    const std::int32_t y = std::min(a->y, b.y);
    return {x, y, std::max(a->maxX(), b.maxX()) - x, std::max(a->maxY(), b.maxY()) - y};
}

void note(const xcb_generic_event_t& event, const XExtensions& offered, ScreenChanges& changes) {
    constexpr std::uint8_t sentByClient = 0x80;
    const auto type = static_cast<std::uint8_t>(event.response_type & ~sentByClient);
    if (type == offered.damage.firstEvent + XCB_DAMAGE_NOTIFY) {
        const auto& area = reinterpret_cast<const xcb_damage_notify_event_t&>(event).area;
        changes.damage = enclosing(changes.damage, {area.x, area.y, area.width, area.height});
    } else if (type == XCB_GE_GENERIC || type == offered.xfixes.firstEvent + XCB_XFIXES_CURSOR_NOTIFY) {
        changes.pointer = true;
    } else if (type == XCB_CONFIGURE_NOTIFY) {
        changes.layout = true;
    } else if (offered.randr.isPresent && type >= offered.randr.firstEvent) {
        const int randrEvent = type - offered.randr.firstEvent;
        changes.layout |= randrEvent == XCB_RANDR_SCREEN_CHANGE_NOTIFY || randrEvent == XCB_RANDR_NOTIFY;
    }
}

}  // namespace

ScreenWatch::ScreenWatch(XConnection& connection, bool watchesPointer) : connection_(connection) {
    const XExtensions& offered = connection.extensions();
    require(offered.xfixes.isAtLeast(2, 0), connection, "XFIXES 2");
    require(offered.damage.isPresent, connection, "DAMAGE");
    watchDamage();
    if (watchesPointer) {
        watchPointer();
    }
    watchLayout();
    forgetTheBeginning();
}

void ScreenWatch::watchDamage() {
    damage_ = xcb_generate_id(connection_.get());
    xcb_damage_create(connection_.get(), damage_, connection_.root(), XCB_DAMAGE_REPORT_LEVEL_BOUNDING_BOX);
}

/// A new watch is told that the whole screen is damaged, which says nothing.
void ScreenWatch::forgetTheBeginning() {
    const auto acknowledgement = xcb_damage_subtract_checked(connection_.get(), damage_, XCB_NONE, XCB_NONE);
    const XReply<xcb_generic_error_t> error(xcb_request_check(connection_.get(), acknowledgement));
    require(!error, connection_, "DAMAGE");
    take();
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

ScreenChanges ScreenWatch::take() {
    ScreenChanges changes;
    while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        note(*event, connection_.extensions(), changes);
    }
    return changes;
}

void ScreenWatch::acknowledgeDamage() {
    xcb_damage_subtract(connection_.get(), damage_, XCB_NONE, XCB_NONE);
}

}  // namespace zorvane
