#include "Zorvane/Platform/Linux/X11/Input/RecordStream.hpp"

#include <fmt/format.h>
#include <xcb/record.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <cstring>
#include <utility>

#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

using Reply = XReply<xcb_record_enable_context_reply_t>;

constexpr std::size_t eventSize = 32;
constexpr std::size_t markSize = 4;
constexpr std::uint32_t allElementsBare = 0;

/// The next reply that has arrived, or null. `isLast` tells that there won't be another one.
Reply nextReply(xcb_connection_t* connection, unsigned int request, bool& isLast) {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    const bool isKnown = xcb_poll_for_reply(connection, request, &reply, &error) != 0;
    const XReply<xcb_generic_error_t> ownedError(error);
    isLast = isKnown && reply == nullptr;
    return Reply(static_cast<xcb_record_enable_context_reply_t*>(reply));
}

DeviceEvent deviceEvent(const std::uint8_t* bytes) {
    constexpr std::uint8_t sentByClient = 0x80;
    // All five kinds are laid out alike.
    xcb_key_press_event_t event;
    static_assert(sizeof event == eventSize);
    std::memcpy(&event, bytes, eventSize);
    const bool isKey = (event.response_type & ~sentByClient) <= XCB_KEY_RELEASE;
    return {.kind = static_cast<DeviceEvent::Kind>(event.response_type & ~sentByClient),
            .detail = event.detail,
            .isRepeat = isKey && event.sequence == 1,
            .time = event.time,
            .x = event.root_x,
            .y = event.root_y,
            .state = event.state};
}

/// Categories have numbers only. The first reply, which has no data, and the last one are of further categories.
void note(const xcb_record_enable_context_reply_t& reply, RecordedInput& input) {
    constexpr std::uint8_t fromServer = 0;
    constexpr std::uint8_t fromClient = 1;
    const std::uint8_t* data = xcb_record_enable_context_data(&reply);
    const auto size = static_cast<std::size_t>(xcb_record_enable_context_data_length(&reply));
    if (reply.category == fromServer) {
        for (std::size_t offset = 0; offset + eventSize <= size; offset += eventSize) {
            input.events.push_back(deviceEvent(data + offset));
        }
    } else if (reply.category == fromClient) {
        input.marks += static_cast<std::uint32_t>(size / markSize);
    }
}

}  // namespace

RecordStream::RecordStream(std::shared_ptr<XConnection> control, std::shared_ptr<XConnection> data)
    : control_(std::move(control)), data_(std::move(data)), context_(createContext()), serverTime_(enableContext()) {}

/// Of requests, only the control connection's marks are recorded.
std::uint32_t RecordStream::createContext() const {
    if (!control_->extensions().record.isPresent) {
        control_->requireAlive();
        throw NSError(X11ErrorDomain, X11MissingExtensionError,
                      {fmt::format("The X server \"{}\" lacks the RECORD extension, without which mouse and keyboard "
                                   "can't be recorded. Its configuration or its options turn it off: have it started "
                                   "with that extension.",
                                   control_->name())});
    }
    xcb_connection_t* connection = control_->get();
    xcb_record_range_t range{};
    range.device_events = {XCB_KEY_PRESS, XCB_MOTION_NOTIFY};
    range.core_requests = {XCB_NO_OPERATION, XCB_NO_OPERATION};
    const xcb_record_client_spec_t client = xcb_get_setup(connection)->resource_id_base;
    const xcb_record_context_t context = xcb_generate_id(connection);
    const auto creation =
        xcb_record_create_context_checked(connection, context, allElementsBare, 1, 1, &client, &range);
    const XReply<xcb_generic_error_t> error(xcb_request_check(connection, creation));
    control_->requireAlive();
    if (error) {
        throw NSError(X11ErrorDomain, error->error_code,
                      {fmt::format("The X server \"{}\" doesn't let this program record mouse and keyboard (error {}).",
                                   control_->name(), error->error_code)});
    }
    return context;
}

/// The first reply tells the server's time.
ServerTime RecordStream::enableContext() {
    const auto& clock = *MonotonicClock::shared();
    const auto before = clock.now();
    const auto enabling = xcb_record_enable_context(data_->get(), context_);
    enabling_ = enabling.sequence;
    const Reply start(xcb_record_enable_context_reply(data_->get(), enabling, nullptr));
    const auto after = clock.now();
    data_->requireAlive();
    if (!start) {
        throw NSError(X11ErrorDomain, 0,
                      {fmt::format("The X server \"{}\" doesn't record mouse and keyboard.", data_->name())});
    }
    return {start->server_time, before, after};
}

RecordedInput RecordStream::take() {
    RecordedInput input;
    while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(data_->get())}) {
        // This reads from the socket. The events are such as no client can decline.
    }
    bool isOver = false;
    while (const Reply reply = nextReply(data_->get(), enabling_, isOver)) {
        note(*reply, input);
    }
    input.isEnd = isOver || !data_->isAlive();
    return input;
}

void RecordStream::expedite() {
    const auto request = xcb_get_input_focus(control_->get());
    xcb_discard_reply(control_->get(), request.sequence);
    xcb_flush(control_->get());
}

void RecordStream::mark() {
    xcb_no_operation(control_->get());
    expedite();
}

}  // namespace zorvane
