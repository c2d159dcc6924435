// The phones that are known now, as capture devices.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/Foundation/NSKeyValueObservers.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneFacts.hpp"

namespace zorvane {

/// A phone that is attached twice, by cable and by network, is one device, and the cable counts. Any thread; observers
/// are told without a lock on the thread that makes the change.
class PhoneRoster {
  public:
    using Devices = std::vector<std::shared_ptr<AVCaptureDevice>>;

    Devices devices() const;
    /// Calls `handler` in this call if the first phones have been listed, else once they have; then after each change
    /// of the list.
    NSKeyValueObservation observe(std::function<void()> handler);

    void put(const AttachedPhone& phone, const PhoneFacts& facts);
    void remove(std::uint32_t deviceID);
    /// The phones that were there at the start have been asked.
    void markListed();

  private:
    class Device;
    struct Entry {
        AttachedPhone phone;
        PhoneFacts facts;
    };

    /// What observers are to hear of.
    struct News {
        bool hasNewList = false;
        std::vector<std::shared_ptr<Device>> changed;  ///< by their pairing alone
    };

    /// Makes the devices of now.
    News renew() ZV_REQUIRES(mutex_);
    void tell(const News& news) const;

    mutable Mutex mutex_;
    std::map<std::uint32_t, Entry> attached_ ZV_GUARDED_BY(mutex_);  // by the service's number
    std::vector<std::shared_ptr<Device>> devices_ ZV_GUARDED_BY(mutex_);
    bool isListed_ ZV_GUARDED_BY(mutex_) = false;
    NSKeyValueObservers<> observers_;
};

}  // namespace zorvane
