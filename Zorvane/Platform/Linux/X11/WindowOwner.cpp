#include "Zorvane/Platform/Linux/X11/WindowOwner.hpp"

#include <unistd.h>
#include <xcb/res.h>
#include <xcb/xcb.h>

#include <limits>
#include <string>

#include "Zorvane/Platform/Linux/X11/XAtoms.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"

namespace zorvane {
namespace {

const std::string& hostName() {
    // Never destroyed: threads may ask while the process exits.
    static const auto& name = *new std::string([] {
        char buffer[256]{};
        gethostname(buffer, sizeof buffer - 1);
        return std::string(buffer);
    }());
    return name;
}

std::int32_t asProcessID(std::uint32_t number) {
    constexpr std::uint32_t highest = std::numeric_limits<std::int32_t>::max();
    return number <= highest ? static_cast<std::int32_t>(number) : 0;
}

/// Needs the server's side of the connection to be on this machine.
bool serverCanTell(const XConnection& connection) {
    return connection.extensions().resources.isAtLeast(1, 2) && connection.isLocal();
}

}  // namespace

WindowOwnerQuery::WindowOwnerQuery(const XConnection& connection, const WindowAtoms& atoms, std::uint32_t window)
    : connection_(&connection),
      claimedProcess_(connection, window, atoms.processID),
      claimedMachine_(connection, window, XCB_ATOM_WM_CLIENT_MACHINE),
      asksServer_(serverCanTell(connection)) {
    if (asksServer_) {
        const xcb_res_client_id_spec_t question{.client = window, .mask = XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
        clientQuery_ = xcb_res_query_client_ids(connection.get(), 1, &question).sequence;
    }
}

std::int32_t WindowOwnerQuery::processID() const {
    const std::int32_t claimed = asProcessID(claimedProcess_.answer().numberOr(0));
    const XProperty machine = claimedMachine_.answer();
    const std::int32_t connected = connectedProcess();
    return claimed != 0 && isSameMachine(machine.bytes(), hostName()) ? claimed : connected;
}

std::int32_t WindowOwnerQuery::connectedProcess() const {
    if (!asksServer_) {
        return 0;
    }
    const XReply<xcb_res_query_client_ids_reply_t> reply(
        xcb_res_query_client_ids_reply(connection_->get(), {clientQuery_}, nullptr));
    if (!reply) {
        return 0;
    }
    for (auto each = xcb_res_query_client_ids_ids_iterator(reply.get()); each.rem > 0;
         xcb_res_client_id_value_next(&each)) {
        const bool isProcess = (each.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0;
        if (isProcess && xcb_res_client_id_value_value_length(each.data) > 0) {
            return asProcessID(*xcb_res_client_id_value_value(each.data));
        }
    }
    return 0;
}

std::int32_t windowOwner(const XConnection& connection, const WindowAtoms& atoms, std::uint32_t window) {
    return WindowOwnerQuery(connection, atoms, window).processID();
}

bool isSameMachine(std::string_view claimed, std::string_view host) {
    claimed = claimed.substr(0, claimed.find('\0'));
    const auto shortForm = [](std::string_view name) { return name.substr(0, name.find('.')); };
    const bool bothFull = claimed.find('.') != claimed.npos && host.find('.') != host.npos;
    return !claimed.empty() && (bothFull ? claimed == host : shortForm(claimed) == shortForm(host));
}

}  // namespace zorvane
