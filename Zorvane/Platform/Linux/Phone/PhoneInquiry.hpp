// Asks one attached phone, again and again until it delivers.
#pragma once

#include <filesystem>
#include <functional>
#include <thread>

#include "Zorvane/Platform/Linux/Phone/PhoneFacts.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneWakeup.hpp"

namespace zorvane {

/// Has a thread of its own, so that a phone that hangs holds up nobody. Once the phone delivers, the thread sleeps
/// until it is told to ask again; before that it asks every three seconds.
class PhoneInquiry {
  public:
    /// `tell` is called on the thread with each answer.
    PhoneInquiry(std::filesystem::path service, AttachedPhone phone, std::function<void(const PhoneFacts&)> tell);
    /// Waits for the thread, which ends at once. Afterwards `tell` isn't called.
    ~PhoneInquiry();

    void askAgain() const { again_.set(); }

  private:
    void run();
    bool waitToAskAgain(bool isReady) const;

    const std::filesystem::path service_;
    const AttachedPhone phone_;
    const std::function<void(const PhoneFacts&)> tell_;
    const PhoneWakeup stop_;
    const PhoneWakeup again_;
    std::thread thread_;
};

}  // namespace zorvane
