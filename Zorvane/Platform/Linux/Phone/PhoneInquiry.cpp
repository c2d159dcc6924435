#include "Zorvane/Platform/Linux/Phone/PhoneInquiry.hpp"

#include <poll.h>

#include <array>
#include <utility>

#include "Zorvane/Internal/Concurrency/ThreadName.hpp"

namespace zorvane {
namespace {

// The list of phones waits for the first answer of each.
constexpr std::chrono::milliseconds longestFirstAnswer{800};
constexpr std::chrono::milliseconds longestAnswer{5000};
constexpr int pauseBetweenQuestions = 3000;  // milliseconds

}  // namespace

PhoneInquiry::PhoneInquiry(std::filesystem::path service, AttachedPhone phone,
                           std::function<void(const PhoneFacts&)> tell)
    : service_(std::move(service)), phone_(std::move(phone)), tell_(std::move(tell)), thread_([this] { run(); }) {}

PhoneInquiry::~PhoneInquiry() {
    stop_.set();
    thread_.join();
}

void PhoneInquiry::run() {
    setCurrentThreadName("zv.phone");
    bool isReady = false;
    auto longest = longestFirstAnswer;
    do {
        again_.clear();
        const PhoneFacts facts = askPhone(service_, phone_, stop_, std::exchange(longest, longestAnswer));
        if (stop_.isSet()) {
            return;  // the answer may have been cut short
        }
        tell_(facts);
        isReady = facts.pairing == AVCaptureDevicePairing::notApplicable;
    } while (waitToAskAgain(isReady));
}

bool PhoneInquiry::waitToAskAgain(bool isReady) const {
    std::array<pollfd, 2> polled{{{stop_.descriptor(), POLLIN, 0}, {again_.descriptor(), POLLIN, 0}}};
    poll(polled.data(), polled.size(), isReady ? -1 : pauseBetweenQuestions);
    return polled[0].revents == 0;
}

}  // namespace zorvane
