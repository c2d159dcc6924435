#include "tests/Unit/Platform/Linux/Phone/FakePhoneService.hpp"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "Zorvane/Platform/Linux/Phone/PropertyList.hpp"

namespace zorvane {
namespace {

int makeSocket(const std::filesystem::path& path) {
    const int made = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.native().size() + 1);
    ::bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    ::listen(made, 16);
    return made;
}

std::string plist(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>" + body + "</dict></plist>";
}

std::string entry(const char* key, const std::string& value) {
    return fmt::format("<key>{}</key><string>{}</string>", key, value);
}

std::string entry(const char* key, int value) {
    return fmt::format("<key>{}</key><integer>{}</integer>", key, value);
}

std::string result(int number) {
    return plist(entry("MessageType", "Result") + entry("Number", number));
}

bool receive(int connection, void* bytes, std::size_t size) {
    return ::recv(connection, bytes, size, MSG_WAITALL) == static_cast<ssize_t>(size);
}

void send(int connection, const std::string& bytes) {
    ::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

void sendAsService(int connection, const std::string& body) {
    const std::array<std::uint32_t, 4> header{static_cast<std::uint32_t>(16 + body.size()), 1, 8, 1};
    send(connection, std::string(reinterpret_cast<const char*>(header.data()), sizeof header) + body);
}

}  // namespace

FakePhoneService::FakePhoneService(const std::filesystem::path& socket)
    : path_(socket), socket_(makeSocket(socket)), acceptor_([this] { accept(); }) {}

FakePhoneService::~FakePhoneService() {
    ::shutdown(socket_, SHUT_RDWR);
    acceptor_.join();
    ::close(socket_);
    std::filesystem::remove(path_);
    std::unique_lock lock(mutex_);
    for (const int connection : connections_) {
        ::shutdown(connection, SHUT_RDWR);
    }
    auto threads = std::move(threads_);
    lock.unlock();
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const int connection : connections_) {
        ::close(connection);
    }
}

void FakePhoneService::attach(int deviceID, const FakePhone& phone) {
    std::lock_guard lock(mutex_);
    phones_[deviceID] = phone;
    tellListeners(plist(attachedMessage(deviceID, phone)));
}

void FakePhoneService::pair(int deviceID, const FakePhone& phone) {
    std::lock_guard lock(mutex_);
    phones_[deviceID] = phone;
    tellListeners(plist(entry("MessageType", "Paired") + entry("DeviceID", deviceID)));
}

void FakePhoneService::detach(int deviceID) {
    std::lock_guard lock(mutex_);
    phones_.erase(deviceID);
    tellListeners(plist(entry("MessageType", "Detached") + entry("DeviceID", deviceID)));
}

void FakePhoneService::accept() {
    for (int connection; (connection = ::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        std::lock_guard lock(mutex_);
        connections_.push_back(connection);
        threads_.emplace_back([this, connection] { serve(connection); });
    }
}

void FakePhoneService::serve(int connection) {
    int phoneID = 0;
    while (true) {
        std::uint32_t size = 0;
        std::array<std::uint32_t, 4> header{};
        if (phoneID != 0) {
            if (!receive(connection, &size, sizeof size)) {
                return;
            }
            size = ntohl(size);
        } else {
            if (!receive(connection, header.data(), sizeof header)) {
                return;
            }
            size = header[0] - sizeof header;
        }
        std::string request(size, '\0');
        if (!receive(connection, request.data(), size)) {
            return;
        }
        std::lock_guard lock(mutex_);
        if (phoneID == 0) {
            sendAsService(connection, answer(connection, request, phoneID));
            const bool listens = std::ranges::count(listeners_, connection) > 0;
            for (auto phone = phones_.begin(); listens && phone != phones_.end(); ++phone) {
                sendAsService(connection, plist(attachedMessage(phone->first, phone->second)));
            }
        } else if (!phones_[phoneID].hangs) {
            const std::string body = answerOfPhone(request, phones_[phoneID]);
            const std::uint32_t length = htonl(static_cast<std::uint32_t>(body.size()));
            send(connection, std::string(reinterpret_cast<const char*>(&length), sizeof length) + body);
        }
    }
}

std::string FakePhoneService::answer(int connection, const std::string& request, int& phoneID) {
    const PropertyList message = PropertyList::parse(std::as_bytes(std::span(request)));
    const std::string kind = message.text("MessageType").value_or("");
    if (kind == "Listen") {
        listeners_.push_back(connection);
        return result(0);
    }
    if (kind == "ListDevices") {
        std::string list;
        for (const auto& [deviceID, phone] : phones_) {
            list += "<dict>" + attachedMessage(deviceID, phone) + "</dict>";
        }
        return plist("<key>DeviceList</key><array>" + list + "</array>");
    }
    if (kind == "ReadPairRecord") {
        const auto phone = std::ranges::find(phones_, message.text("PairRecordID").value_or(""),
                                             [](const auto& known) { return known.second.udid; });
        const bool hasRecord = phone != phones_.end() && phone->second.hasPairRecord;
        // An empty dictionary, in base 64.
        return hasRecord ? plist("<key>PairRecordData</key><data>PHBsaXN0PjxkaWN0Lz48L3BsaXN0Pg==</data>") : result(2);
    }
    if (kind == "Connect" && phones_.contains(static_cast<int>(message.number("DeviceID").value_or(0))) &&
        message.number("PortNumber") == htons(62078)) {
        phoneID = static_cast<int>(*message.number("DeviceID"));
        return result(0);
    }
    return result(2);
}

std::string FakePhoneService::answerOfPhone(const std::string& request, const FakePhone& phone) const {
    const PropertyList message = PropertyList::parse(std::as_bytes(std::span(request)));
    if (message.text("Request") == "GetValue") {
        return plist("<key>Value</key><dict>" + entry("DeviceName", phone.name) + entry("ProductType", phone.model) +
                     "</dict>");
    }
    return plist(phone.sessionError.empty() ? entry("SessionID", "1") : entry("Error", phone.sessionError));
}

std::string FakePhoneService::attachedMessage(int deviceID, const FakePhone& phone) const {
    return entry("MessageType", "Attached") + entry("DeviceID", deviceID) + "<key>Properties</key><dict>" +
           entry("SerialNumber", phone.udid) + entry("ConnectionType", phone.connection) + "</dict>";
}

void FakePhoneService::tellListeners(const std::string& message) {
    for (const int listener : listeners_) {
        sendAsService(listener, message);
    }
}

}  // namespace zorvane
