// Listening to mouse and keyboard.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "Zorvane/Platform/CoreGraphics/CGEvent.hpp"

namespace zorvane {

/// A set of event types: bit number t for the type t.
using CGEventMask = std::uint64_t;

/// Hears the events of a set, in the order in which they happened, one call at a time on a thread of the listener. It
/// only notes them: whoever takes long holds up the next event. It must not end its own listener.
using CGEventHandler = std::function<void(const CGEvent& event)>;

/// Hears events until it goes. After that no call is under way.
class CGEventListener {
  public:
    virtual ~CGEventListener() = default;

    /// Comes back when the handler has heard all that happened before this call, or when there is nobody left to ask.
    /// Blocks for the time of one answer of the window server, which is limited. Not to be called inside the handler.
    virtual void flush() = 0;
};

/// The events of the whole session, whichever program they are for. Nothing is held back from that program. Any thread.
class CGEvents {
  public:
    virtual ~CGEvents() = default;

    /// Where the pointer is and which buttons and modifiers are held, as an event of type `null`, or of a dragging type
    /// while a button is held. Nothing when the window server can't be asked.
    virtual std::optional<CGEvent> create() = 0;

    /// Begins to listen; events from then on are heard. It hears mouse and keyboard, and `tapDisabledByTimeout` or
    /// `tapDisabledByUserInput` as its last event if the system ends it. Null if it can't be made for a reason that
    /// isn't known; throws `NSError` with a text for the user if it is.
    virtual std::unique_ptr<CGEventListener> tapCreate(CGEventMask eventsOfInterest, CGEventHandler handler) = 0;
};

}  // namespace zorvane
