#include "StopSignal.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <system_error>
#include <utility>

namespace zorvane::cli {
namespace {

/// `timeout` and shells may send a signal to the process and again to its group; that is one wish.
constexpr auto sameWish = std::chrono::milliseconds(50);

sigset_t stopSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGHUP);
    return set;
}

int requireDescriptor(int descriptor, const char* what) {
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return descriptor;
}

/// The signal's own effect, so that the caller sees by what the process ended.
[[noreturn]] void leaveAtOnce(int number) {
    std::signal(number, SIG_DFL);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, number);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    std::raise(number);
    _exit(128 + number);
}

}  // namespace

void StopSignal::block() {
    // A shell script starts its background jobs with SIGINT ignored, and may well send it. An ignored SIGHUP is
    // nohup's.
    std::signal(SIGINT, SIG_DFL);
    const sigset_t set = stopSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

StopSignal::StopSignal(std::function<void()> onStop) : onStop_(std::move(onStop)) {
    const sigset_t set = stopSignals();
    signals_ = requireDescriptor(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK), "signalfd");
    quit_ = requireDescriptor(eventfd(0, EFD_CLOEXEC), "eventfd");
    hearPending();
    thread_ = std::thread([this] { listen(); });
}

StopSignal::~StopSignal() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(quit_, &one, sizeof(one));
    thread_.join();
    close(quit_);
    close(signals_);
}

void StopSignal::listen() {
    pollfd waits[] = {{signals_, POLLIN, 0}, {quit_, POLLIN, 0}};
    while (waits[1].revents == 0) {
        if (poll(waits, 2, -1) > 0) {
            hearPending();
        }
    }
}

void StopSignal::hearPending() {
    signalfd_siginfo info = {};
    while (read(signals_, &info, sizeof(info)) == sizeof(info)) {
        signalled(static_cast<int>(info.ssi_signo));
    }
}

void StopSignal::signalled(int number) {
    const auto now = std::chrono::steady_clock::now();
    if (!stop_) {
        stop_ = {number, now};
        onStop_();
        return;
    }
    const bool isSameWish = number == stop_->signal && now - stop_->time < sameWish;
    if (number == SIGINT && !isSameWish) {
        leaveAtOnce(number);
    }
}

}  // namespace zorvane::cli
