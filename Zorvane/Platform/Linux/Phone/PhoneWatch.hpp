// Follows the phones that are attached to this machine.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <thread>

#include "Zorvane/Internal/Concurrency/ThreadSafety.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneInquiry.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneRoster.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneWakeup.hpp"

namespace zorvane {

class PhoneSocket;
class PropertyList;

/// Listens to the service on a thread of its own and has each phone asked. Where the service isn't running, or stops,
/// there are no phones; the thread then sleeps until its socket appears.
class PhoneWatch {
  public:
    PhoneWatch(std::filesystem::path service, std::shared_ptr<PhoneRoster> roster);
    /// Waits for all threads, which end at once.
    ~PhoneWatch();

  private:
    void run();
    void listen();
    void listPhones();
    void take(const PropertyList& message);
    void attach(const PropertyList& message);
    void detach(std::uint64_t deviceID);
    void detachAll();
    void answered(const AttachedPhone& phone, const PhoneFacts& facts);
    void markListedIfDone(std::uint64_t deviceID);

    const std::filesystem::path service_;
    const std::shared_ptr<PhoneRoster> roster_;
    const PhoneWakeup stop_;
    std::map<std::uint64_t, std::unique_ptr<PhoneInquiry>> inquiries_;  // belongs to the thread
    Mutex mutex_;
    std::set<std::uint64_t> awaited_ ZV_GUARDED_BY(mutex_);  // not answered yet
    bool hasListed_ ZV_GUARDED_BY(mutex_) = false;           // whether all that were there at first are known
    std::thread thread_;
};

}  // namespace zorvane
