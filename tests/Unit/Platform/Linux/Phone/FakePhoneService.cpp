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

/// The text or number under a key of a request; empty if there is none.
std::string value(const std::string& request, const std::string& key) {
    const auto found = request.find("<key>" + key + "</key>");
    if (found == std::string::npos) {
        return {};
    }
    const auto begin = request.find('>', request.find('<', found + key.size() + 11)) + 1;
    return request.substr(begin, request.find('<', begin) - begin);
}

bool receive(int connection, void* bytes, std::size_t size) {
    return ::recv(connection, bytes, size, MSG_WAITALL) == static_cast<ssize_t>(size);
}

void send(int connection, const std::string& bytes) {
    ::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

void sendAsService(int connection, const std::string& body, std::uint32_t tag = 0) {
    const std::array<std::uint32_t, 4> header{static_cast<std::uint32_t>(16 + body.size()), 1, 8, tag};
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
            sendAsService(connection, answer(connection, request, phoneID), header[3]);
            const bool listens = std::ranges::count(listeners_, connection) > 0;
            for (auto phone = phones_.begin(); listens && phone != phones_.end(); ++phone) {
                sendAsService(connection, plist(attachedMessage(phone->first, phone->second)));
            }
        } else if (phones_[phoneID].manner != FakePhone::Manner::hangs) {
            const std::string body = answerOfPhone(request, phones_[phoneID]);
            const std::uint32_t length = htonl(static_cast<std::uint32_t>(body.size()));
            send(connection, std::string(reinterpret_cast<const char*>(&length), sizeof length) + body);
            if (body.find("<true/>") != std::string::npos) {
                ::shutdown(connection, SHUT_RDWR);  // in place of what only a real phone can say
            }
        }
    }
}

std::string FakePhoneService::answer(int connection, const std::string& request, int& phoneID) {
    const std::string kind = value(request, "MessageType");
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
        const auto phone = std::ranges::find(phones_, value(request, "PairRecordID"),
                                             [](const auto& known) { return known.second.udid; });
        const bool hasRecord = phone != phones_.end() && phone->second.hasPairRecord;
        // A dictionary with the HostID "H", in base 64.
        return hasRecord ? plist(
                               "<key>PairRecordData</key><data>PHBsaXN0PjxkaWN0PjxrZXk+SG9zdElEPC9rZXk+PHN0cmluZz5IPC9z"
                               "dHJpbmc+PC9kaWN0PjwvcGxpc3Q+</data>")
                         : result(2);
    }
    const std::string deviceID = value(request, "DeviceID");
    const auto phone =
        std::ranges::find(phones_, deviceID, [](const auto& known) { return std::to_string(known.first); });
    if (kind == "Connect" && phone != phones_.end() && value(request, "PortNumber") == std::to_string(htons(62078))) {
        phoneID = phone->first;
        return result(0);
    }
    return result(2);
}

std::string FakePhoneService::answerOfPhone(const std::string& request, const FakePhone& phone) {
    const std::string kind = value(request, "Request");
    questions_.insert(kind);
    std::string answer = entry("Request", kind);
    if (kind == "GetValue") {
        answer +=
            "<key>Value</key><dict>" + entry("DeviceName", phone.name) + entry("ProductType", phone.model) + "</dict>";
    } else if (!phone.sessionError.empty() || value(request, "HostID") != "H") {
        answer += entry("Error", phone.sessionError);
    } else {
        const char* encrypts = phone.manner == FakePhone::Manner::encrypts ? "<true/>" : "<false/>";
        answer += entry("SessionID", "1") + "<key>EnableSessionSSL</key>" + encrypts;
    }
    return plist(answer);
}

std::set<std::string> FakePhoneService::questions() const {
    std::lock_guard lock(mutex_);
    return questions_;
}

std::string FakePhoneService::attachedMessage(int deviceID, const FakePhone& phone) const {
    return entry("MessageType", "Attached") + entry("DeviceID", deviceID) + "<key>Properties</key><dict>" +
           entry("DeviceID", deviceID) + entry("SerialNumber", phone.udid) + entry("ConnectionType", phone.connection) +
           // An address of no family that there is, in base 64: nothing is asked over the network.
           "<key>NetworkAddress</key><data>AQAAAAAAAAA=</data></dict>";
}

void FakePhoneService::tellListeners(const std::string& message) {
    for (const int listener : listeners_) {
        sendAsService(listener, message);
    }
}

}  // namespace zorvane
