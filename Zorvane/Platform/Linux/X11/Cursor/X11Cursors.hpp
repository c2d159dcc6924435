// The cursors of an X server.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/AppKit/NSCursor.hpp"
#include "Zorvane/Platform/Linux/X11/Cursor/CursorTheme.hpp"
#include "Zorvane/Platform/Linux/X11/Cursor/FontCursors.hpp"

namespace zorvane {

class XConnection;

/// `NSCursors` on XFIXES and the cursor theme. A point is a pixel.
///
/// The image is fetched once and then only when the server tells of another one; else a question is a look at a socket.
/// A cursor that looks like one of the theme's in another size, that a program gave the name of one, or that is a glyph
/// of the server's own font, is shown as the theme's cursor of that type. Any other one is what it looks like.
///
/// A connection of its own begins with the first question, and anew when it was lost.
class X11Cursors final : public NSCursors {
  public:
    std::optional<NSCursor> currentSystemCursor() override;
    std::optional<NSCursor> systemCursor(ZVCursorType type) override;

  private:
    bool connect() ZV_REQUIRES(mutex_);
    void takeEvents() ZV_REQUIRES(mutex_);
    void fetch() ZV_REQUIRES(mutex_);
    NSCursor recognized(const CursorPixels& pixels, std::string_view name) ZV_REQUIRES(mutex_);

    Mutex mutex_;
    std::shared_ptr<XConnection> connection_ ZV_GUARDED_BY(mutex_);
    bool isOutdated_ ZV_GUARDED_BY(mutex_) = true;
    NSCursor shown_ ZV_GUARDED_BY(mutex_);
    std::unique_ptr<const CursorTheme> theme_ ZV_GUARDED_BY(mutex_);        // null until it is asked for
    std::unique_ptr<const FontCursors> fontCursors_ ZV_GUARDED_BY(mutex_);  // as is this
};

}  // namespace zorvane
