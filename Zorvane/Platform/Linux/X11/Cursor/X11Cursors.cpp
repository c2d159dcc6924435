#include "Zorvane/Platform/Linux/X11/Cursor/X11Cursors.hpp"

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <string_view>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/X11/BrokenPipeSignal.hpp"
#include "Zorvane/Platform/Linux/X11/Cursor/CursorNames.hpp"
#include "Zorvane/Platform/Linux/X11/XAnswerLimit.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

using ImageReply = XReply<xcb_xfixes_get_cursor_image_and_name_reply_t>;

bool tellsCursors(const XConnection& connection) {
    return connection.extensions().xfixes.isAtLeast(2, 0);
}

std::string_view nameIn(const xcb_xfixes_get_cursor_image_and_name_reply_t& reply) {
    return {xcb_xfixes_get_cursor_image_and_name_name(&reply),
            static_cast<std::size_t>(xcb_xfixes_get_cursor_image_and_name_name_length(&reply))};
}

CursorPixels pixelsIn(const xcb_xfixes_get_cursor_image_and_name_reply_t& reply) {
    const auto count = static_cast<std::size_t>(xcb_xfixes_get_cursor_image_and_name_cursor_image_length(&reply));
    return {.pixels = {xcb_xfixes_get_cursor_image_and_name_cursor_image(&reply), count},
            .width = reply.width,
            .height = reply.height,
            .hotX = reply.xhot,
            .hotY = reply.yhot};
}

}  // namespace

std::optional<NSCursor> X11Cursors::currentSystemCursor() {
    const MutexLock lock(mutex_);
    if (!connect()) {
        return std::nullopt;
    }
    takeEvents();
    if (isOutdated_) {
        fetch();
    }
    return connection_->isAlive() ? std::optional(shown_) : std::nullopt;
}

std::optional<NSCursor> X11Cursors::systemCursor(ZVCursorType type) {
    const MutexLock lock(mutex_);
    if (type == ZVCursorType::custom || !connect()) {
        return std::nullopt;
    }
    const PoolBlockingScope blocking;
    const BrokenPipeScope brokenPipe;
    const XAnswerLimit limit(connection_);
    auto choice = CursorThemeChoice::read(*connection_);
    if (!theme_ || theme_->choice() != choice) {
        theme_ = std::make_unique<const CursorTheme>(std::move(choice));
        fontCursors_ = std::make_unique<const FontCursors>(*connection_);
        isOutdated_ = true;
    }
    return theme_->cursor(type);
}

/// False if there is no server that could be asked for its cursor.
bool X11Cursors::connect() {
    if (connection_ && connection_->isAlive()) {
        return tellsCursors(*connection_);
    }
    const PoolBlockingScope blocking;
    const BrokenPipeScope brokenPipe;
    try {
        auto connection = XConnection::open();
        if (tellsCursors(*connection)) {
            xcb_xfixes_select_cursor_input(connection->get(), connection->root(),
                                           XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
        }
        connection_ = std::move(connection);
        isOutdated_ = true;
        return tellsCursors(*connection_);
    } catch (const NSError&) {
        return false;
    }
}

/// No other events come than those of the cursor.
void X11Cursors::takeEvents() {
    while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_->get())}) {
        isOutdated_ = true;
    }
}

/// What changes while the answer is on its way lies behind it and is taken the next time. A server that shows no cursor
/// gives no answer.
void X11Cursors::fetch() {
    const PoolBlockingScope blocking;
    const BrokenPipeScope brokenPipe;
    const XAnswerLimit limit(connection_);
    const auto query = xcb_xfixes_get_cursor_image_and_name(connection_->get());
    const ImageReply reply(xcb_xfixes_get_cursor_image_and_name_reply(connection_->get(), query, nullptr));
    isOutdated_ = false;
    shown_ = reply ? recognized(pixelsIn(*reply), nameIn(*reply)) : NSCursor();
}

/// By its image, else by its name, else as a glyph. Until somebody asked for the theme's cursors, nobody wants to know.
NSCursor X11Cursors::recognized(const CursorPixels& pixels, std::string_view name) {
    NSCursor cursor = makeCursor(pixels);
    if (!theme_ || !cursor.tiffRepresentation) {
        return cursor;
    }
    auto type = theme_->typeOf(cursor);
    if (!type) {
        type = cursorTypeNamed(name);
    }
    if (!type) {
        type = fontCursors_->typeOf(pixels);
    }
    return theme_->cursor(type.value_or(ZVCursorType::custom)).value_or(cursor);
}

}  // namespace zorvane
