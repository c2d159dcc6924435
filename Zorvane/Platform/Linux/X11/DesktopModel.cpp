#include "Zorvane/Platform/Linux/X11/DesktopModel.hpp"

#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "Zorvane/Platform/Linux/X11/XReply.hpp"
#include "Zorvane/Platform/Linux/X11/XWindowQuery.hpp"

namespace zorvane {

/// What is of interest in an event of the X server.
struct DesktopEvent {
    enum class Kind : std::uint8_t { property, structure, displays, other };

    Kind kind = Kind::other;
    std::uint8_t type = 0;       ///< the protocol's number
    std::uint32_t window = 0;    ///< that it happened to
    std::uint32_t parent = 0;    ///< of a structural event: the window whose watchers are told, that one or its parent
    std::uint32_t property = 0;  ///< that was written or deleted
};

namespace {

constexpr std::uint32_t windowEvents = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;

bool isDisplayEvent(const XConnection& connection, std::uint8_t type) {
    const XExtension& randr = connection.extensions().randr;
    const int event = type - randr.firstEvent;
    return randr.isPresent && (event == XCB_RANDR_SCREEN_CHANGE_NOTIFY || event == XCB_RANDR_NOTIFY);
}

DesktopEvent decode(const XConnection& connection, const xcb_generic_event_t& event) {
    constexpr std::uint8_t sentByClient = 0x80;
    const auto type = static_cast<std::uint8_t>(event.response_type & ~sentByClient);
    switch (type) {
        case XCB_PROPERTY_NOTIFY: {
            const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(event);
            return {.kind = DesktopEvent::Kind::property,
                    .type = type,
                    .window = property.window,
                    .property = property.atom};
        }
        case XCB_CREATE_NOTIFY:
        case XCB_DESTROY_NOTIFY:
        case XCB_UNMAP_NOTIFY:
        case XCB_MAP_NOTIFY:
        case XCB_REPARENT_NOTIFY:
        case XCB_CONFIGURE_NOTIFY:
        case XCB_GRAVITY_NOTIFY:
        case XCB_CIRCULATE_NOTIFY: {
            const auto& any = reinterpret_cast<const xcb_configure_notify_event_t&>(event);  // they all begin alike
            return {.kind = DesktopEvent::Kind::structure, .type = type, .window = any.window, .parent = any.event};
        }
        default:
            return {.kind = isDisplayEvent(connection, type) ? DesktopEvent::Kind::displays : DesktopEvent::Kind::other,
                    .type = type};
    }
}

}  // namespace

const XWindow* DesktopState::find(std::uint32_t windowID) const {
    const auto found =
        std::find_if(windows.begin(), windows.end(), [&](const auto& window) { return window->windowID == windowID; });
    return found == windows.end() ? nullptr : found->get();
}

DesktopModel::DesktopModel(std::shared_ptr<XConnection> connection)
    : connection_(std::move(connection)), atoms_(WindowAtoms::intern(*connection_)) {
    watch(connection_->root(), windowEvents | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
    if (connection_->extensions().randr.isPresent) {
        xcb_randr_select_input(connection_->get(), connection_->root(),
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                                   XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE | XCB_RANDR_NOTIFY_MASK_OUTPUT_PROPERTY);
    }
    xcb_flush(connection_->get());
}

/// A window that has gone meanwhile gives an error, which comes like an event and says nothing.
void DesktopModel::watch(std::uint32_t window, std::uint32_t events) {
    xcb_change_window_attributes(connection_->get(), window, XCB_CW_EVENT_MASK, &events);
}

DesktopChanges DesktopModel::takeEvents() {
    const bool wasOutdated = isOutdated();
    DesktopChanges changes;
    while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_->get())}) {
        changes |= note(decode(*connection_, *event));
    }
    changes.windows = !wasOutdated && isOutdated();
    return changes;
}

DesktopChanges DesktopModel::note(const DesktopEvent& event) {
    const bool isRoot = event.window == connection_->root();
    switch (event.kind) {
        case DesktopEvent::Kind::property:
            return isRoot ? noteRootProperty(event.property) : noteWindowProperty(event.window, event.property);
        case DesktopEvent::Kind::structure:
            return isRoot ? DesktopChanges{.displays = event.type == XCB_CONFIGURE_NOTIFY} : noteStructure(event);
        case DesktopEvent::Kind::displays:
            return {.displays = true};
        case DesktopEvent::Kind::other:
            return {};
    }
    return {};
}

DesktopChanges DesktopModel::noteRootProperty(std::uint32_t property) {
    if (property == atoms_.currentDesktop) {
        markAllOutdated();
    }
    const bool isListed = property == atoms_.clientListStacking || property == atoms_.clientList;
    const bool isKnown = isListed || property == atoms_.windowManagerCheck || property == atoms_.currentDesktop ||
                         property == atoms_.activeWindow;
    isOrderOutdated_ |= isKnown;
    return {.activeWindow = property == atoms_.activeWindow,
            .applications = property == atoms_.clientList || property == atoms_.windowManagerCheck};
}

DesktopChanges DesktopModel::noteWindowProperty(std::uint32_t window, std::uint32_t property) {
    const bool tellsOwner =
        property == XCB_ATOM_WM_CLASS || property == XCB_ATOM_WM_CLIENT_MACHINE || property == atoms_.processID;
    if (tellsOwner || property == XCB_ATOM_WM_NAME || property == atoms_.name || property == atoms_.desktop ||
        property == atoms_.opacity || property == atoms_.frameExtents || property == atoms_.shadowExtents ||
        property == atoms_.windowType || property == atoms_.state) {
        markOutdated(window);
    }
    return {.applications = tellsOwner};
}

/// What happens to the window manager's frame happens to the window in it. Without a window manager the root window's
/// children are the list, and moving one may have put it in front of another.
DesktopChanges DesktopModel::noteStructure(const DesktopEvent& event) {
    const bool isListed = !order_.hasWindowManager && event.parent == connection_->root();
    const bool endsWindowManager = event.type == XCB_DESTROY_NOTIFY && event.window == order_.windowManagerCheck;
    isOrderOutdated_ |= isListed || endsWindowManager;
    if (event.type == XCB_REPARENT_NOTIFY) {
        if (const auto entry = entries_.find(event.window); entry != entries_.end()) {
            entry->second.isPlaceKnown = false;
        }
    }
    markOutdated(windowIn(event.window));
    const bool isMove = event.type == XCB_CONFIGURE_NOTIFY || event.type == XCB_GRAVITY_NOTIFY ||
                        event.type == XCB_CIRCULATE_NOTIFY || event.type == XCB_CREATE_NOTIFY;
    return {.activeWindow = endsWindowManager, .applications = endsWindowManager || (isListed && !isMove)};
}

std::uint32_t DesktopModel::windowIn(std::uint32_t frame) const {
    const auto content = contents_.find(frame);
    return content == contents_.end() ? frame : content->second;
}

void DesktopModel::markOutdated(std::uint32_t window) {
    const auto entry = entries_.find(window);
    if (entry != entries_.end() && !std::exchange(entry->second.isOutdated, true)) {
        outdated_.push_back(window);
    }
}

void DesktopModel::markAllOutdated() {
    for (const auto& [window, entry] : entries_) {
        markOutdated(window);
    }
}

void DesktopModel::refresh() {
    if (std::exchange(isOrderOutdated_, false)) {
        readOrder();
    }
    readWindows(std::exchange(outdated_, {}));
    rebuildState();
}

void DesktopModel::readOrder() {
    order_ = XWindowOrder::read(*connection_, atoms_);
    const std::unordered_set<std::uint32_t> listed(order_.windowIDs.begin(), order_.windowIDs.end());
    std::erase_if(entries_, [&](const auto& entry) {
        if (listed.contains(entry.first)) {
            return false;
        }
        watch(entry.first, XCB_EVENT_MASK_NO_EVENT);
        return true;
    });
    std::erase_if(contents_, [&](const auto& content) { return !listed.contains(content.second); });
    for (const std::uint32_t window : order_.windowIDs) {
        if (entries_.try_emplace(window).second) {
            watch(window, windowEvents);
            outdated_.push_back(window);
        }
    }
}

void DesktopModel::readWindows(const std::vector<std::uint32_t>& windows) {
    std::vector<std::pair<Entry*, XWindowQuery>> queries;
    std::vector<std::uint32_t> withoutPlace;
    queries.reserve(windows.size());
    for (const std::uint32_t window : windows) {
        const auto entry = entries_.find(window);
        if (entry == entries_.end()) {
            continue;
        }
        entry->second.isOutdated = false;
        queries.emplace_back(&entry->second, XWindowQuery(*connection_, atoms_, window, order_.currentDesktop));
        if (!std::exchange(entry->second.isPlaceKnown, true)) {
            withoutPlace.push_back(window);
        }
    }
    for (const auto& [entry, query] : queries) {
        const auto window = query.answer();
        if (!window) {
            entry->window = nullptr;
        } else if (!entry->window || *entry->window != *window) {
            entry->window = std::make_shared<const XWindow>(*window);
        }
    }
    readPlaces(withoutPlace);
}

/// Walks up from each window to the root window, all at the same pace.
void DesktopModel::readPlaces(const std::vector<std::uint32_t>& windows) {
    struct Step {
        std::uint32_t window;
        std::uint32_t ancestor;
    };
    std::vector<Step> steps;
    const std::unordered_set<std::uint32_t> moved(windows.begin(), windows.end());
    std::erase_if(contents_, [&](const auto& content) { return moved.contains(content.second); });
    for (const std::uint32_t window : windows) {
        steps.push_back({window, window});
    }
    constexpr int deepest = 8;  // no window manager puts that many frames around a window
    for (int depth = 0; depth < deepest && !steps.empty(); ++depth) {
        std::vector<xcb_query_tree_cookie_t> queries;
        for (const Step& step : steps) {
            queries.push_back(xcb_query_tree(connection_->get(), step.ancestor));
        }
        std::vector<Step> next;
        for (std::size_t index = 0; index < steps.size(); ++index) {
            const XReply<xcb_query_tree_reply_t> tree(
                xcb_query_tree_reply(connection_->get(), queries[index], nullptr));
            if (tree && tree->parent != connection_->root() && tree->parent != XCB_NONE) {
                contents_[tree->parent] = steps[index].window;
                next.push_back({steps[index].window, tree->parent});
            }
        }
        steps = std::move(next);
    }
}

void DesktopModel::rebuildState() {
    auto state = std::make_shared<DesktopState>();
    state->activeWindow = order_.activeWindow;
    state->windows.reserve(order_.windowIDs.size());
    for (const std::uint32_t window : order_.windowIDs) {
        const auto entry = entries_.find(window);
        if (entry != entries_.end() && entry->second.window && order_.lists(*entry->second.window)) {
            state->windows.push_back(entry->second.window);
        }
    }
    if (state->activeWindow != state_->activeWindow || state->windows != state_->windows) {
        state_ = std::move(state);
    }
}

}  // namespace zorvane
