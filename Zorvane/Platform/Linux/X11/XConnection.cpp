#include "Zorvane/Platform/Linux/X11/XConnection.hpp"

#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <mutex>
#include <thread>
#include <utility>

#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/X11/BrokenPipeSignal.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

namespace zorvane {
namespace {

std::string displayName() {
    const char* name = std::getenv("DISPLAY");
    return name ? name : "";
}

NSError connectionError(const std::string& name) {
    if (name.empty()) {
        return {X11ErrorDomain,
                0,
                {"There is no X server to capture from: DISPLAY isn't set. Start this program inside a "
                 "desktop session, or set DISPLAY to the server's name, such as \":0\"."}};
    }
    return {X11ErrorDomain,
            0,
            {fmt::format("Can't reach the X server \"{}\". Is DISPLAY right, does the server run, and "
                         "does it let this user in (XAUTHORITY)?",
                         name)}};
}

NSError noAnswerError(const std::string& name) {
    return {X11ErrorDomain, X11NoAnswerError, {fmt::format("The X server \"{}\" doesn't answer. Does it hang?", name)}};
}

/// One at a time, since XCB finds the authority file through a library with a static buffer.
xcb_connection_t* connect(const std::string& name, int& screenNumber) {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    return xcb_connect(name.c_str(), &screenNumber);
}

xcb_screen_t* screenAt(xcb_connection_t* connection, int number) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0 && number > 0; --number) {
        xcb_screen_next(&screens);
    }
    return screens.rem > 0 ? screens.data : nullptr;
}

}  // namespace

XConnection::Opening XConnection::beginOpening() {
    std::packaged_task<std::shared_ptr<XConnection>()> open([name = displayName()] {
        setCurrentThreadName("zv.connect");
        blockBrokenPipeSignal();
        std::shared_ptr<XConnection> connection(new XConnection(name));
        return connection->screen_ ? connection : nullptr;
    });
    Opening opening = open.get_future().share();
    std::thread(std::move(open)).detach();
    return opening;
}

std::shared_ptr<XConnection> XConnection::await(const Opening& opening) {
    if (opening.wait_for(longestXAnswer) != std::future_status::ready) {
        throw noAnswerError(displayName());
    }
    if (!opening.get()) {
        throw connectionError(displayName());
    }
    return opening.get();
}

XConnection::XConnection(std::string name) : name_(std::move(name)) {
    int screenNumber = 0;
    connection_ = connect(name_, screenNumber);
    if (isAlive()) {
        screen_ = screenAt(connection_, screenNumber);
        extensions_ = XExtensions::negotiate(connection_);
    }
    if (!isAlive()) {
        screen_ = nullptr;
    }
}

XConnection::~XConnection() {
    xcb_disconnect(connection_);
}

std::uint32_t XConnection::root() const {
    return screen_->root;
}

bool XConnection::isAlive() const {
    // XCB notices a lost connection when it next uses it; the socket knows at once.
    pollfd socket{.fd = xcb_get_file_descriptor(connection_), .events = 0, .revents = 0};
    return xcb_connection_has_error(connection_) == 0 && poll(&socket, 1, 0) == 0;
}

void XConnection::requireAlive() const {
    if (isGivenUp_) {
        throw noAnswerError(name_);
    }
    if (!isAlive()) {
        throw NSError(X11ErrorDomain, 0, {fmt::format("The X server \"{}\" went away.", name_)});
    }
}

void XConnection::requireExtension(bool isPresent, std::string_view extension) const {
    if (!isPresent) {
        requireAlive();
        throw NSError(SCStreamErrorDomain, static_cast<std::int64_t>(SCStreamErrorCode::failedToStart),
                      {fmt::format("The X server \"{}\" lacks the {} extension, without which its screen can't be "
                                   "recorded.",
                                   name_, extension)});
    }
}

bool XConnection::isLocal() const {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    const int socket = xcb_get_file_descriptor(connection_);
    return getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0 && address.ss_family == AF_UNIX;
}

void XConnection::hangUp() {
    shutdown(xcb_get_file_descriptor(connection_), SHUT_RDWR);
}

void XConnection::giveUp() {
    isGivenUp_ = true;
    hangUp();
}

}  // namespace zorvane
