#include "Zorvane/Platform/Linux/Phone/PhoneRoster.hpp"

#include <algorithm>
#include <atomic>
#include <utility>

namespace zorvane {

class PhoneRoster::Device final : public AVCaptureDevice {
  public:
    Device(std::string udid, PhoneFacts facts)
        : udid_(std::move(udid)), facts_(std::move(facts)), pairing_(facts_.pairing) {}

    std::string uniqueID() const override { return udid_; }
    std::string localizedName() const override { return facts_.name; }
    std::string modelID() const override { return facts_.model; }
    std::string manufacturer() const override { return "Apple Inc."; }
    AVCaptureDeviceType deviceType() const override { return AVCaptureDeviceType::externalUnknown; }
    AVCaptureDeviceTransportType transportType() const override { return AVCaptureDeviceTransportType::usb; }
    bool isConnected() const override { return true; }
    bool isSuspended() const override { return false; }
    AVCaptureDevicePairing pairing() const override { return pairing_; }
    NSKeyValueObservation observeSuspended(std::function<void()> handler) override {
        return observers_.add(std::move(handler));
    }

    bool isOf(const std::string& udid, const PhoneFacts& facts) const {
        return udid_ == udid && facts_.name == facts.name && facts_.model == facts.model;
    }
    /// True if it is another one than before.
    bool setPairing(AVCaptureDevicePairing pairing) { return pairing_.exchange(pairing) != pairing; }
    void tellObservers() const { observers_.notify(); }

  private:
    const std::string udid_;
    const PhoneFacts facts_;
    std::atomic<AVCaptureDevicePairing> pairing_;
    NSKeyValueObservers<> observers_;
};

PhoneRoster::Devices PhoneRoster::devices() const {
    MutexLock lock(mutex_);
    return {devices_.begin(), devices_.end()};
}

NSKeyValueObservation PhoneRoster::observe(std::function<void()> handler) {
    auto token = observers_.add(handler);
    MutexLock lock(mutex_);
    const bool isListed = isListed_;
    lock.unlock();
    if (isListed) {
        handler();
    }
    return token;
}

void PhoneRoster::put(const AttachedPhone& phone, const PhoneFacts& facts) {
    News news;
    {
        MutexLock lock(mutex_);
        attached_[phone.deviceID] = {phone, facts};
        news = renew();
    }
    tell(news);
}

void PhoneRoster::remove(std::uint32_t deviceID) {
    News news;
    {
        MutexLock lock(mutex_);
        attached_.erase(deviceID);
        news = renew();
    }
    tell(news);
}

void PhoneRoster::markListed() {
    MutexLock lock(mutex_);
    const bool isNew = !std::exchange(isListed_, true);
    lock.unlock();
    if (isNew) {
        observers_.notify();
    }
}

PhoneRoster::News PhoneRoster::renew() {
    News news;
    std::map<std::string, const Entry*> byUDID;
    for (const auto& [deviceID, entry] : attached_) {
        const Entry*& best = byUDID[entry.phone.udid];
        if (!best || entry.phone.attachment == AttachedPhone::Attachment::cable) {
            best = &entry;
        }
    }
    std::vector<std::shared_ptr<Device>> devices;
    for (const auto& [udid, entry] : byUDID) {
        const auto known = std::ranges::find_if(
            devices_, [&udid, &entry](const auto& device) { return device->isOf(udid, entry->facts); });
        if (known == devices_.end()) {
            devices.push_back(std::make_shared<Device>(udid, entry->facts));
            continue;
        }
        devices.push_back(*known);
        if ((*known)->setPairing(entry->facts.pairing)) {
            news.changed.push_back(*known);
        }
    }
    news.hasNewList = std::exchange(devices_, devices) != devices && isListed_;
    return news;
}

void PhoneRoster::tell(const News& news) const {
    if (news.hasNewList) {
        observers_.notify();
    }
    for (const auto& device : news.changed) {
        device->tellObservers();
    }
}

}  // namespace zorvane
