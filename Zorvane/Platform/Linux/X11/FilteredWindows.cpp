#include "Zorvane/Platform/Linux/X11/FilteredWindows.hpp"

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "Zorvane/Platform/Linux/X11/ServerGrab.hpp"
#include "Zorvane/Platform/Linux/X11/WindowIdentity.hpp"
#include "Zorvane/Platform/Linux/X11/WindowRepainting.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {

FilteredWindows::FilteredWindows(XConnection& connection, const SCContentFilter& filter, const PictureFormats& formats,
                                 Observer& observer)
    : connection_(connection),
      filter_(filter),
      atoms_(WindowAtoms::intern(connection)),
      formats_(formats),
      observer_(observer),
      backlog_(connection) {
    takeStock();
    connection.requireAlive();
}

/// The server makes a pixmap from what the screen shows, so nothing may move between taking stock and then.
void FilteredWindows::takeStock() {
    std::vector<StackedWindow*> fresh;
    {
        const ServerGrab grab(connection_);
        fresh = addAll();
        for (const auto& window : stack_.windows()) {
            identify(*window);
        }
    }
    for (StackedWindow* const window : fresh) {
        stack_.veil(*window, WindowStack::Others::inFront);
        distrustPainting(window->bounds);
    }
}

/// Returns the windows that get a pixmap by this. A window that has one already, for a compositor or another recording,
/// is as it is.
std::vector<StackedWindow*> FilteredWindows::addAll() {
    std::vector<StackedWindow*> fresh;
    selectWindowEvents(connection_);
    const auto query = xcb_query_tree(connection_.get(), connection_.root());
    const XReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(connection_.get(), query, nullptr));
    for (int index = 0; tree && index < xcb_query_tree_children_length(tree.get()); ++index) {
        StackedWindow& window = addExisting(xcb_query_tree_children(tree.get())[index]);
        if (window.isMapped) {
            window.hasNewShape = true;
            window.content->takePixmap(window.format, window.bounds);
            window.hasNewPixmap = !window.content->hasPicture();
            if (window.hasNewPixmap) {
                fresh.push_back(&window);
            }
        }
    }
    xcb_composite_redirect_subwindows(connection_.get(), connection_.root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    return fresh;
}

/// One that has gone is added too, since events may still name it as another's neighbour. It takes nothing at all.
StackedWindow& FilteredWindows::addExisting(std::uint32_t id) {
    const auto geometry = xcb_get_geometry(connection_.get(), id);
    const auto attributes = xcb_get_window_attributes(connection_.get(), id);
    const XReply<xcb_get_geometry_reply_t> shape(xcb_get_geometry_reply(connection_.get(), geometry, nullptr));
    const XReply<xcb_get_window_attributes_reply_t> state(
        xcb_get_window_attributes_reply(connection_.get(), attributes, nullptr));
    StackedWindow& window = stack_.add(id);
    window.content = std::make_unique<WindowContent>(connection_, id);
    if (!shape || !state) {
        return window;
    }
    window.bounds = {shape->x, shape->y, shape->width + 2 * shape->border_width,
                     shape->height + 2 * shape->border_width};
    window.border = shape->border_width;
    window.takesInputOnly = state->_class == XCB_WINDOW_CLASS_INPUT_ONLY;
    if (!window.takesInputOnly) {
        window.isMapped = state->map_state == XCB_MAP_STATE_VIEWABLE;
        window.format = formats_.ofVisual(state->visual);
        window.content->watchPainting();
    }
    return window;
}

// Programs that do things to windows faster than one can look at each have to wait meanwhile.
void FilteredWindows::note(const xcb_generic_event_t& event) {
    const XExtensions& offered = connection_.extensions();
    const bool isPainting = event.response_type == offered.damage.firstEvent + XCB_DAMAGE_NOTIFY;
    backlog_.add(isPainting ? EventBacklog::painting : EventBacklog::window);
    if (isPainting) {
        painted(event);
    } else if (offered.shape.isPresent && event.response_type == offered.shape.firstEvent + XCB_SHAPE_NOTIFY) {
        shaped(event);
    } else {
        dispatchWindowEvent(event, connection_, *this);
    }
}

/// A window may have been resized or mapped by the time it is asked after; the events say so in turn.
void FilteredWindows::created(std::uint32_t id, const WindowPlace& place) {
    StackedWindow& window = addExisting(id);
    window.bounds = place.bounds;
    window.border = place.border;
    window.isMapped = false;
}

void FilteredWindows::destroyed(std::uint32_t id) {
    if (StackedWindow* const window = stack_.find(id)) {
        unmap(*window);
        stack_.remove(id);
    }
}

void FilteredWindows::mapped(std::uint32_t id) {
    if (StackedWindow* const window = stack_.find(id)) {
        map(*window);
    }
}

void FilteredWindows::unmapped(std::uint32_t id) {
    if (StackedWindow* const window = stack_.find(id)) {
        unmap(*window);
    }
}

void FilteredWindows::configured(std::uint32_t id, const WindowPlace& newPlace, std::uint32_t siblingBelow) {
    if (StackedWindow* const window = stack_.find(id)) {
        place(*window, newPlace);
        if (stack_.placeAbove(id, siblingBelow)) {
            tellLook(*window);
        }
    }
}

void FilteredWindows::moved(std::uint32_t id, std::int32_t x, std::int32_t y) {
    if (StackedWindow* const window = stack_.find(id)) {
        place(*window, {{x, y, window->bounds.width, window->bounds.height}, window->border});
    }
}

void FilteredWindows::raised(std::uint32_t id) {
    if (stack_.raise(id)) {
        tellLook(*stack_.find(id));
    }
}

void FilteredWindows::lowered(std::uint32_t id) {
    if (stack_.placeAbove(id, XCB_NONE)) {
        tellLook(*stack_.find(id));
    }
}

/// A window that a window manager frames or lets go of.
void FilteredWindows::reparented(std::uint32_t id, std::uint32_t parent) {
    destroyed(id);
    if (parent == connection_.root()) {
        addExisting(id).isMapped = false;  // until an event says so
    } else {
        familyChanged(parent);
    }
}

void FilteredWindows::familyChanged(std::uint32_t id) {
    if (StackedWindow* const window = stack_.find(topLevelOf(connection_, id))) {
        identifyAgain(*window);
    }
}

void FilteredWindows::propertyChanged(std::uint32_t id, std::uint32_t property) {
    if (tellsIdentity(atoms_, property)) {
        familyChanged(id);
    }
}

void FilteredWindows::shaped(const xcb_generic_event_t& event) {
    const auto& change = reinterpret_cast<const xcb_shape_notify_event_t&>(event);
    StackedWindow* const window = stack_.find(change.affected_window);
    if (window && change.shape_kind == XCB_SHAPE_SK_BOUNDING) {
        window->hasNewShape = true;
        tellLook(*window);
    }
}

void FilteredWindows::painted(const xcb_generic_event_t& event) {
    const auto& painting = reinterpret_cast<const xcb_damage_notify_event_t&>(event);
    StackedWindow* const window = stack_.find(painting.drawable);
    if (!window || !window->isVisible()) {
        return;
    }
    window->wasPainted = true;
    const PixelRect rect{painting.area.x, painting.area.y, painting.area.width, painting.area.height};
    if (event.full_sequence >= window->trustsPaintingFrom) {
        window->veil.lift(rect);
    }
    const PixelRect onScreen = rect.movedBy(window->inside().x, window->inside().y);
    stack_.isOutOfSight(*window, onScreen) ? observer_.paintedOutOfSight() : observer_.lookChanged(onScreen);
}

void FilteredWindows::map(StackedWindow& window) {
    if (window.takesInputOnly) {
        return;
    }
    window.isMapped = true;
    identify(window);
    window.hasNewPixmap = true;
    window.hasNewShape = true;
    stack_.veil(window, WindowStack::Others::anywhere);
    tellLook(window);
}

void FilteredWindows::unmap(StackedWindow& window) {
    tellLook(window);
    window.isMapped = false;
    window.content->dropPixmap();
    window.veil.clear();
}

void FilteredWindows::place(StackedWindow& window, const WindowPlace& place) {
    if (place.bounds == window.bounds && place.border == window.border) {
        return;
    }
    const bool hasNewSize = place.bounds.width != window.bounds.width || place.bounds.height != window.bounds.height ||
                            place.border != window.border;
    tellLook(window);
    window.bounds = place.bounds;
    window.border = place.border;
    if (hasNewSize) {
        window.hasNewPixmap = true;
        if (!window.veil.isEmpty()) {  // some of what was under it may be elsewhere now
            window.veil.lay({0, 0, window.inside().width, window.inside().height});
        }
        stack_.veil(window, WindowStack::Others::anywhere);
    }
    tellLook(window);
}

void FilteredWindows::identify(StackedWindow& window) {
    window.verdict = verdictOn(window);
    if (window.verdict == WindowVerdict::shown) {
        window.content->watchPainting();
    } else {
        window.content->ignorePainting();
        window.content->dropPixmap();
    }
}

/// A frame is shown if all that lies in it is.
WindowVerdict FilteredWindows::verdictOn(const StackedWindow& window) const {
    const auto identities = identifyWindow(connection_, atoms_, window.id);
    const auto isShown = [this](const SCWindow& identity) { return filter_.shows(identity); };
    return !identities.empty() && std::ranges::all_of(identities, isShown) ? WindowVerdict::shown
                                                                           : WindowVerdict::leftOut;
}

/// One that is not on the screen is identified when it comes there.
void FilteredWindows::identifyAgain(StackedWindow& window) {
    if (window.isMapped && verdictOn(window) != window.verdict) {
        hasShownTooMuch_ |= window.isVisible();
        unmap(window);
        map(window);
    }
}

void FilteredWindows::tellLook(const StackedWindow& window) const {
    if (window.isVisible()) {
        observer_.lookChanged(window.bounds);
    }
    distrustPainting(window.bounds);
}

/// The server tells of painting also where a window comes into view, and where it keeps what a window held at another
/// size. So painting before now lifts no veil here, and what was painted under one is asked for once more.
void FilteredWindows::distrustPainting(const PixelRect& rect) const {
    for (const auto& window : stack_.windows()) {
        const bool isConcerned =
            window->isVisible() && !window->veil.isEmpty() && !intersection(window->bounds, rect).isEmpty();
        if (isConcerned) {
            window->trustsPaintingFrom = askToPaint(connection_, window->id, window->veil.extent());
        }
    }
}

bool FilteredWindows::settle() {
    bool waited = false;
    for (const auto& window : stack_.windows()) {
        if (!window->isVisible() || (!window->hasNewPixmap && !window->hasNewShape)) {
            continue;
        }
        if (std::exchange(window->hasNewPixmap, false)) {
            window->content->takePixmap(window->format, window->bounds);
        }
        if (std::exchange(window->hasNewShape, false)) {
            window->content->takeShape();
        }
        waited = true;
    }
    if (!waited) {
        backlog_.clear();
    }
    return waited;
}

void FilteredWindows::acknowledgePainting() {
    hasShownTooMuch_ = false;
    for (const auto& window : stack_.windows()) {
        if (std::exchange(window->wasPainted, false)) {
            window->content->acknowledgePainting();
        }
    }
}

}  // namespace zorvane
