// Asks one attached phone, again and again until it delivers.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/Foundation/HostClock.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneFacts.hpp"

namespace zorvane {

/// A phone that hangs holds up nobody: each question has a thread of its own, which nothing waits for. A phone that
/// doesn't deliver yet is asked again three seconds after its answer. Belongs to a strand: every call is made there.
class PhoneInquiry : public std::enable_shared_from_this<PhoneInquiry> {
  public:
    /// `tell` is called on the strand with each answer; and with what is presumed if the first takes more than 0.8 s.
    using Tell = std::function<void(const PhoneFacts& facts)>;
    PhoneInquiry(AttachedPhone phone, std::shared_ptr<Executor> strand, Tell tell);

    void begin();
    /// Asks now; if a question is out, once it has ended.
    void ask();
    /// Afterwards `tell` isn't called. A question that is out comes to nothing.
    void end();
    bool hasTold() const { return hasTold_; }

  private:
    void takeAnswer(const PhoneFacts& facts);
    void tell(const PhoneFacts& facts);
    void tellWhatIsPresumed();
    HostClock::TimerID callLater(std::chrono::milliseconds pause, void (PhoneInquiry::*step)());

    const AttachedPhone phone_;
    const std::shared_ptr<Executor> strand_;
    Tell tell_;  // empty once the inquiry has ended
    PhoneFacts presumed_;
    HostClock::TimerID nextQuestion_{};
    bool isAsking_ = false;
    bool asksAgain_ = false;
    bool hasTold_ = false;
};

}  // namespace zorvane
