#include "Zorvane/Platform/Linux/Phone/PhoneWatch.hpp"

#include <poll.h>

#include <array>
#include <chrono>
#include <utility>

#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneServiceFolder.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneSocket.hpp"

namespace zorvane {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds longestAnswer{5};

PropertyList serviceRequest(const char* kind) {
    PropertyList request;
    request.set("MessageType", kind).set("ProgName", "zorvane").set("ClientVersionString", "zorvane");
    request.set("kLibUSBMuxVersion", std::uint64_t(3));
    return request;
}

}  // namespace

PhoneWatch::PhoneWatch(std::filesystem::path service, std::shared_ptr<PhoneRoster> roster)
    : service_(std::move(service)), roster_(std::move(roster)), thread_([this] { run(); }) {}

PhoneWatch::~PhoneWatch() {
    stop_.set();
    thread_.join();
}

void PhoneWatch::run() {
    setCurrentThreadName("zv.phones");
    const PhoneServiceFolder folder(service_);
    std::array<pollfd, 2> polled{{{stop_.descriptor(), POLLIN, 0}, {folder.descriptor(), POLLIN, 0}}};
    // A service that has just made its socket may not listen on it yet: a few more attempts after each sign of it.
    int attempts = 1;
    while (polled[0].revents == 0) {
        try {
            listen();
        } catch (const PhoneConnectionError&) {
            detachAll();
            roster_->markListed();
        }
        attempts = folder.takeChanges() ? 10 : attempts - 1;
        poll(polled.data(), polled.size(), attempts > 0 ? 100 : -1);
    }
    detachAll();
}

void PhoneWatch::listen() {
    PhoneSocket socket(service_, stop_, steady_clock::now() + longestAnswer);
    if (socket.askService(serviceRequest("Listen")).number("Number") != 0) {
        throw PhoneConnectionError("the service doesn't tell");
    }
    listPhones();
    socket.setDeadline(PhoneSocket::never);
    while (true) {
        take(socket.receiveFromService());
    }
}

void PhoneWatch::listPhones() {
    PhoneSocket socket(service_, stop_, steady_clock::now() + longestAnswer);
    socket.askService(serviceRequest("ListDevices")).forEach("DeviceList", [this](const PropertyList& phone) {
        attach(phone);
    });
    MutexLock lock(mutex_);
    hasListed_ = true;
    const bool isDone = awaited_.empty();
    lock.unlock();
    if (isDone) {
        roster_->markListed();
    }
}

void PhoneWatch::take(const PropertyList& message) {
    const std::string kind = message.text("MessageType").value_or("");
    const std::uint64_t deviceID = message.number("DeviceID").value_or(0);
    if (kind == "Attached") {
        attach(message);
    } else if (kind == "Detached") {
        detach(deviceID);
    } else if (kind == "Paired") {
        if (const auto inquiry = inquiries_.find(deviceID); inquiry != inquiries_.end()) {
            inquiry->second->askAgain();
        }
    }
}

void PhoneWatch::attach(const PropertyList& message) {
    const PropertyList properties = message.dictionary("Properties");
    AttachedPhone phone;
    phone.deviceID = message.number("DeviceID").value_or(0);
    phone.udid = properties.text("SerialNumber").value_or("");
    if (properties.text("ConnectionType") == "Network") {
        phone.attachment = AttachedPhone::Attachment::network;
    }
    if (phone.udid.empty() || inquiries_.contains(phone.deviceID)) {
        return;  // a list and an event may tell of the same phone
    }
    MutexLock lock(mutex_);
    awaited_.insert(phone.deviceID);
    lock.unlock();
    const auto tell = [this, phone](const PhoneFacts& facts) { answered(phone, facts); };
    inquiries_[phone.deviceID] = std::make_unique<PhoneInquiry>(service_, phone, tell);
}

void PhoneWatch::detach(std::uint64_t deviceID) {
    inquiries_.erase(deviceID);  // waits for its thread, so that no answer comes after this
    roster_->remove(deviceID);
    markListedIfDone(deviceID);
}

void PhoneWatch::detachAll() {
    while (!inquiries_.empty()) {
        detach(inquiries_.begin()->first);
    }
}

void PhoneWatch::answered(const AttachedPhone& phone, const PhoneFacts& facts) {
    roster_->put(phone, facts);
    markListedIfDone(phone.deviceID);
}

void PhoneWatch::markListedIfDone(std::uint64_t deviceID) {
    MutexLock lock(mutex_);
    awaited_.erase(deviceID);
    const bool isDone = hasListed_ && awaited_.empty();
    lock.unlock();
    if (isDone) {
        roster_->markListed();
    }
}

}  // namespace zorvane
