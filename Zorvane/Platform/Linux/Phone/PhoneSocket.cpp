#include "Zorvane/Platform/Linux/Phone/PhoneSocket.hpp"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "Zorvane/Platform/Linux/Phone/PhoneWakeup.hpp"

namespace zorvane {
namespace {

constexpr std::size_t longestMessage = 1 << 20;  // far beyond what either says
constexpr std::uint32_t propertyListVersion = 1;
constexpr std::uint32_t propertyListMessage = 8;
constexpr std::uint16_t lockdownPort = 62078;

/// What stands before each message of the service; all little-endian.
using ServiceHeader = std::array<std::uint32_t, 4>;  // length with the header, version, kind, tag

template <class Value>
std::span<const std::byte> bytesOf(const Value& value) {
    return std::as_bytes(std::span(&value, 1));
}

void checkSize(std::size_t size) {
    if (size > longestMessage) {
        throw PhoneConnectionError("a message of a senseless length");
    }
}

}  // namespace

std::filesystem::path PhoneSocket::servicePath() {
    constexpr std::string_view prefix = "UNIX:";
    const char* address = std::getenv("USBMUXD_SOCKET_ADDRESS");
    if (address && std::string_view(address).starts_with(prefix)) {
        return std::string_view(address).substr(prefix.size());
    }
    return "/var/run/usbmuxd";
}

PhoneSocket::PhoneSocket(const std::filesystem::path& path, const PhoneWakeup& stop, Deadline deadline)
    : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)), stop_(stop), deadline_(deadline) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.native().size() >= sizeof address.sun_path) {
        throw PhoneConnectionError("the path is too long");
    }
    std::memcpy(address.sun_path, path.c_str(), path.native().size() + 1);
    // On a local socket this ends at once, one way or the other.
    if (connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw PhoneConnectionError("no service");
    }
}

PropertyList PhoneSocket::receiveFromService() {
    ServiceHeader header{};
    std::memcpy(header.data(), receive(sizeof header).data(), sizeof header);
    checkSize(header[0]);
    if (header[0] < sizeof header || header[2] != propertyListMessage) {
        throw PhoneConnectionError("a message of another kind");
    }
    return PropertyList::parse(receive(header[0] - sizeof header));
}

PropertyList PhoneSocket::askService(const PropertyList& request) {
    const std::string body = request.xml();
    const ServiceHeader header{static_cast<std::uint32_t>(sizeof(ServiceHeader) + body.size()), propertyListVersion,
                               propertyListMessage, 1};
    send(bytesOf(header));
    send(std::as_bytes(std::span(body)));
    return receiveFromService();
}

void PhoneSocket::connectToPhone(std::uint64_t deviceID) {
    PropertyList request;
    request.set("MessageType", "Connect").set("DeviceID", deviceID).set("PortNumber", htons(lockdownPort));
    if (askService(request).number("Number") != 0) {
        throw PhoneConnectionError("the phone can't be reached");
    }
}

PropertyList PhoneSocket::askPhone(const PropertyList& request) {
    const std::string body = request.xml();
    send(bytesOf(htonl(static_cast<std::uint32_t>(body.size()))));
    send(std::as_bytes(std::span(body)));
    std::uint32_t size = 0;
    std::memcpy(&size, receive(sizeof size).data(), sizeof size);
    checkSize(ntohl(size));
    return PropertyList::parse(receive(ntohl(size)));
}

void PhoneSocket::send(std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        wait(POLLOUT);
        const ssize_t sent = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno != EAGAIN && errno != EINTR) {
            throw PhoneConnectionError("the connection broke");
        }
        bytes = bytes.subspan(sent > 0 ? static_cast<std::size_t>(sent) : 0);
    }
}

std::vector<std::byte> PhoneSocket::receive(std::size_t size) {
    std::vector<std::byte> bytes(size);
    for (std::size_t filled = 0; filled < size;) {
        wait(POLLIN);
        const ssize_t count = recv(socket_.get(), bytes.data() + filled, size - filled, 0);
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) {
            throw PhoneConnectionError("the connection ended");
        }
        filled += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return bytes;
}

void PhoneSocket::wait(short events) {
    using std::chrono::milliseconds;
    std::array<pollfd, 2> polled{{{socket_.get(), events, 0}, {stop_.descriptor(), POLLIN, 0}}};
    const auto left = std::chrono::ceil<milliseconds>(deadline_ - std::chrono::steady_clock::now());
    const int timeout = deadline_ == never ? -1 : static_cast<int>(std::max(left, milliseconds(0)).count());
    const int ready = poll(polled.data(), polled.size(), timeout);
    if (ready == 0 || polled[1].revents != 0) {
        throw PhoneConnectionError(ready == 0 ? "no answer in time" : "stopped");
    }
}

}  // namespace zorvane
