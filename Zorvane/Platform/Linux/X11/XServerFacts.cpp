#include "Zorvane/Platform/Linux/X11/XServerFacts.hpp"

#include <fmt/format.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <string_view>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"
#include "Zorvane/Platform/Linux/X11/XSession.hpp"

namespace zorvane {
namespace {

using Reach = XServerFacts::Reach;

/// Whether somebody listens on a socket of this machine, even if not to this process. A name that begins with a zero
/// byte is one that stands in no directory.
bool somebodyListens(std::string_view socketName) {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    if (socketName.size() >= sizeof address.sun_path) {
        return false;
    }
    std::ranges::copy(socketName, address.sun_path);
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + socketName.size());
    const int result = ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), size);
    const int error = result == 0 ? 0 : errno;
    ::close(descriptor);
    return error == 0 || error == EAGAIN || error == EACCES;
}

/// Why no connection to the server of this name came about.
Reach reachWithoutConnection(const std::string& name) {
    if (name.empty()) {
        return Reach::unnamed;
    }
    char* host = nullptr;
    int number = 0;
    if (xcb_parse_display(name.c_str(), &host, &number, nullptr) == 0) {
        return Reach::absent;
    }
    const std::string_view where = host;
    const bool isLocal = where.empty() || where == "unix";
    std::free(host);
    if (!isLocal) {
        return Reach::outOfReach;
    }
    const std::string path = fmt::format("/tmp/.X11-unix/X{}", number);
    const bool isThere = somebodyListens(path) || somebodyListens(std::string(1, '\0') + path);
    return isThere ? Reach::refused : Reach::absent;
}

bool hasXTest(xcb_connection_t* connection) {
    constexpr std::string_view name = "XTEST";
    const auto query = xcb_query_extension(connection, name.size(), name.data());
    const XReply<xcb_query_extension_reply_t> reply(xcb_query_extension_reply(connection, query, nullptr));
    return reply && reply->present;
}

void readOffer(const XConnection& connection, XServerFacts& facts) {
    const XExtensions& offered = connection.extensions();
    facts.hasDamage = offered.damage.isPresent;
    facts.hasXFixes = offered.xfixes.isAtLeast(2, 0);
    facts.hasRecord = offered.record.isPresent;
    facts.hasXTest = hasXTest(connection.get());
    connection.requireAlive();
}

}  // namespace

XServerFacts readXServerFacts(XSession& session) {
    const char* name = std::getenv("DISPLAY");
    XServerFacts facts{.name = name ? name : ""};
    try {
        const XQuery query = session.query();
        readOffer(*query, facts);
        facts.reach = Reach::reachable;
    } catch (const NSError& error) {
        facts.reach = error.code() == X11NoAnswerError ? Reach::silent : reachWithoutConnection(facts.name);
    }
    return facts;
}

}  // namespace zorvane
