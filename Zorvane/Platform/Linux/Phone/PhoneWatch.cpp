#include "Zorvane/Platform/Linux/Phone/PhoneWatch.hpp"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"
#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneInquiry.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneRoster.hpp"

namespace zorvane {
namespace {

// For a service that hangs, and for a phone that was unplugged between the list and the first event.
constexpr std::chrono::seconds longestFirstList(3);
constexpr std::chrono::milliseconds tolerance(50);

}  // namespace

/// Outlives the watch while a question is out. Its state belongs to the strand.
class PhoneWatch::Core : public std::enable_shared_from_this<Core> {
  public:
    using Event = PhoneSubscription::Event;

    explicit Core(std::shared_ptr<PhoneRoster> roster) : roster_(std::move(roster)) {}

    void begin() {
        std::thread([self = shared_from_this()] {
            setCurrentThreadName("zv.phones");
            self->strand_->post([self, phones = listPhones()] { self->await(phones); });
        }).detach();
        const auto clock = MonotonicClock::shared();
        clock->schedule(clock->now() + longestFirstList, tolerance, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->strand_->post([self] { self->roster_->markListed(); });
            }
        });
    }

    void handOn(Event event, const AttachedPhone& phone) {
        strand_->post([self = shared_from_this(), event, phone] { self->take(event, phone); });
    }

    void end() {
        strand_->post([self = shared_from_this()] {
            while (!self->inquiries_.empty()) {
                self->detach(self->inquiries_.begin()->first);
            }
        });
    }

  private:
    void take(Event event, const AttachedPhone& phone) {
        const auto inquiry = inquiries_.find(phone.deviceID);
        if (event == Event::attached && inquiry == inquiries_.end()) {
            attach(phone);
        } else if (event == Event::detached) {
            detach(phone.deviceID);
        } else if (event == Event::paired && inquiry != inquiries_.end()) {
            inquiry->second->ask();
        }
    }

    void attach(const AttachedPhone& phone) {
        const auto tell = [weak = weak_from_this(), phone](const PhoneFacts& facts) {
            if (const auto self = weak.lock()) {
                self->roster_->put(phone, facts);
                self->awaitNoLonger(phone.deviceID);
            }
        };
        const auto inquiry = std::make_shared<PhoneInquiry>(phone, strand_, tell);
        inquiries_.emplace(phone.deviceID, inquiry);
        inquiry->begin();
    }

    void detach(std::uint32_t deviceID) {
        if (const auto inquiry = inquiries_.find(deviceID); inquiry != inquiries_.end()) {
            inquiry->second->end();
            inquiries_.erase(inquiry);
            roster_->remove(deviceID);
        }
        awaitNoLonger(deviceID);
    }

    /// Takes the phones that were there at the start.
    void await(const std::vector<AttachedPhone>& phones) {
        awaited_.emplace();
        for (const AttachedPhone& phone : phones) {
            const auto inquiry = inquiries_.find(phone.deviceID);
            if (inquiry == inquiries_.end() || !inquiry->second->hasTold()) {
                awaited_->insert(phone.deviceID);
            }
        }
        markListedIfDone();
    }

    void awaitNoLonger(std::uint32_t deviceID) {
        if (awaited_) {
            awaited_->erase(deviceID);
            markListedIfDone();
        }
    }

    void markListedIfDone() {
        if (awaited_->empty()) {
            roster_->markListed();
        }
    }

    const std::shared_ptr<Executor> strand_ = Executor::makeStrand("zv.phones");
    const std::shared_ptr<PhoneRoster> roster_;
    std::map<std::uint32_t, std::shared_ptr<PhoneInquiry>> inquiries_;  // by the service's number
    std::optional<std::set<std::uint32_t>> awaited_;                    // absent until the service has listed them
};

PhoneWatch::PhoneWatch(const std::shared_ptr<PhoneRoster>& roster)
    : core_(std::make_shared<Core>(roster)),
      subscription_([core = core_](auto event, const AttachedPhone& phone) { core->handOn(event, phone); }) {
    core_->begin();
}

PhoneWatch::~PhoneWatch() {
    core_->end();
}

}  // namespace zorvane
