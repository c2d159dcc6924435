#include "Zorvane/Platform/Linux/Phone/PhoneInquiry.hpp"

#include <chrono>
#include <thread>
#include <utility>

#include "Zorvane/Internal/Concurrency/MonotonicClock.hpp"
#include "Zorvane/Internal/Concurrency/ThreadName.hpp"
#include "Zorvane/Platform/Linux/X11/BrokenPipeSignal.hpp"

namespace zorvane {
namespace {

using std::chrono::milliseconds;

// The list of phones waits for the first answer of each.
constexpr milliseconds longestFirstAnswer(800);
constexpr milliseconds pauseBetweenQuestions(3000);
constexpr milliseconds tolerance(50);

}  // namespace

PhoneInquiry::PhoneInquiry(AttachedPhone phone, std::shared_ptr<Executor> strand, Tell tell)
    : phone_(std::move(phone)),
      strand_(std::move(strand)),
      tell_(std::move(tell)),
      presumed_{.pairing = AVCaptureDevicePairing::pairedNeedsReconnect} {}

void PhoneInquiry::begin() {
    ask();
    callLater(longestFirstAnswer, &PhoneInquiry::tellWhatIsPresumed);
}

void PhoneInquiry::ask() {
    MonotonicClock::shared()->cancel(nextQuestion_);
    if (!tell_) {
        return;
    }
    asksAgain_ = std::exchange(isAsking_, true);
    if (asksAgain_) {
        return;
    }
    std::thread([self = shared_from_this()] {
        setCurrentThreadName("zv.phone");
        blockBrokenPipeSignal();  // a phone may be unplugged while it is written to
        const auto hostID = readHostID(self->phone_.udid);
        self->strand_->post([self, facts = presumeFacts(self->phone_, hostID)] { self->presumed_ = facts; });
        self->strand_->post([self, facts = askPhone(self->phone_, hostID)] { self->takeAnswer(facts); });
    }).detach();
}

void PhoneInquiry::end() {
    tell_ = nullptr;
    MonotonicClock::shared()->cancel(nextQuestion_);
}

void PhoneInquiry::takeAnswer(const PhoneFacts& facts) {
    isAsking_ = false;
    tell(facts);
    if (asksAgain_) {
        ask();
    } else if (tell_ && facts.pairing != AVCaptureDevicePairing::notApplicable) {
        nextQuestion_ = callLater(pauseBetweenQuestions, &PhoneInquiry::ask);
    }
}

void PhoneInquiry::tell(const PhoneFacts& facts) {
    hasTold_ = true;
    if (tell_) {
        tell_(facts);
    }
}

void PhoneInquiry::tellWhatIsPresumed() {
    if (!hasTold_) {
        tell(presumed_);
    }
}

HostClock::TimerID PhoneInquiry::callLater(milliseconds pause, void (PhoneInquiry::*step)()) {
    const auto clock = MonotonicClock::shared();
    return clock->schedule(clock->now() + pause, tolerance, [weak = weak_from_this(), step] {
        if (const auto self = weak.lock()) {
            self->strand_->post([self, step] { ((*self).*step)(); });
        }
    });
}

}  // namespace zorvane
