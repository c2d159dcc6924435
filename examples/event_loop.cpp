// A host with an event loop of its own and no other thread: records the main display until a time or Enter.
//
//     event_loop [--virtual] [SECONDS]
//
// The library's callbacks become events of the loop, so that all of the host's state belongs to one thread and needs no
// lock. Toolkits have what `EventLoop` does here: GLib's g_idle_add, Qt's QMetaObject::invokeMethod, wxWidgets'
// CallAfter.
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <mutex>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "Zorvane/Zorvane.hpp"

using namespace zorvane;

namespace {

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {
        if (number < 0) {
            throw std::system_error(errno, std::generic_category());
        }
    }
    ~Descriptor() { ::close(number_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }
    /// Takes the event away. Which it was doesn't matter: `poll` has told.
    void clear() const {
        std::uint64_t count = 0;
        static_cast<void>(::read(number_, &count, sizeof(count)));
    }

  private:
    const int number_;
};

/// Runs jobs that any thread has posted, in order, and watches the keyboard and a timer.
class EventLoop {
  public:
    void post(std::function<void()> job) {
        const std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
        constexpr std::uint64_t one = 1;
        static_cast<void>(::write(wake_.number(), &one, sizeof(one)));
    }

    void startTimer(int seconds) {
        const itimerspec once{.it_interval = {}, .it_value = {.tv_sec = seconds, .tv_nsec = 0}};
        ::timerfd_settime(timer_.number(), 0, &once, nullptr);
    }

    /// Until `quit`. `onEnd` is called when Enter is pressed or the timer fires.
    void run(const std::function<void()>& onEnd) {
        std::array<pollfd, 3> events{{{wake_.number(), POLLIN, 0}, {timer_.number(), POLLIN, 0}, {0, POLLIN, 0}}};
        while (!quits_ && (::poll(events.data(), events.size(), -1) >= 0 || errno == EINTR)) {
            if (events[0].revents != 0) {
                wake_.clear();
                runJobs();
            }
            if (events[1].revents != 0) {
                timer_.clear();
                onEnd();
            }
            if (events[2].revents != 0) {
                events[2].fd = -1;  // once is enough, and standard input may have ended
                if (std::cin.get() != std::char_traits<char>::eof()) {
                    onEnd();
                }
            }
        }
    }

    void quit() { quits_ = true; }

  private:
    void runJobs() {
        std::vector<std::function<void()>> jobs;
        {
            const std::lock_guard lock(mutex_);
            jobs.swap(jobs_);
        }
        for (const auto& job : jobs) {
            job();
        }
    }

    const Descriptor wake_{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    const Descriptor timer_{::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)};
    std::mutex mutex_;
    std::vector<std::function<void()>> jobs_;  // guarded by mutex_
    bool quits_ = false;                       // of the loop's thread
};

/// One recording, driven by events. Everything here happens on the loop's thread.
class Session {
  public:
    Session(EventLoop& loop, std::uint32_t displayID, int seconds)
        : loop_(loop), seconds_(seconds), recorder_({ZVRecorder::SchemaItem::display(displayID)}) {}

    void start() {
        recorder_.start().start([this](const ZVOutcome<>& outcome) { started(outcome); });
    }

    void stop() {
        if (std::exchange(isRecording_, false)) {
            recorder_.stop().start([this](const ZVOutcome<ZVRecorder::Result>& outcome) { stopped(outcome); });
        }
    }

    int exitStatus() const { return exitStatus_; }

  private:
    void started(const ZVOutcome<>& outcome) {
        if (!outcome.isSuccess()) {
            return failed(outcome.error());
        }
        isRecording_ = true;
        loop_.startTimer(seconds_);
        std::cerr << "Recording. Press Enter to stop.\n";
    }

    void stopped(const ZVOutcome<ZVRecorder::Result>& outcome) {
        if (!outcome.isSuccess()) {
            return failed(outcome.error());
        }
        std::cout << outcome.value().bundleURL.string() << '\n';
        exitStatus_ = EXIT_SUCCESS;
        loop_.quit();
    }

    void failed(const std::exception_ptr& error) {
        std::cerr << localizedDescription(error) << '\n';
        loop_.quit();
    }

    EventLoop& loop_;
    const int seconds_;
    ZVRecorder recorder_;
    bool isRecording_ = false;
    int exitStatus_ = EXIT_FAILURE;
};

int record(int seconds) {
    // Never destroyed: the library posts its jobs until the process ends.
    static auto& loop = *new EventLoop;
    ZVMainExecutor::install([](std::function<void()> job) { loop.post(std::move(job)); });
    for (const auto& display : ZVDisplay::displays()) {
        if (display->isMain()) {
            Session session(loop, display->id(), seconds);
            session.start();
            loop.run([&session] { session.stop(); });
            return session.exitStatus();
        }
    }
    std::cerr << "There is no main display.\n";
    return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
    int seconds = 3;
    for (int index = 1; index < argc; ++index) {
        if (argv[index] == std::string_view("--virtual")) {
            ZVPlatform::use(ZVPlatformKind::virtualDesktop);
        } else {
            seconds = std::atoi(argv[index]);
        }
    }
    try {
        return record(seconds);
    } catch (...) {
        std::cerr << localizedDescription(std::current_exception()) << '\n';
        return EXIT_FAILURE;
    }
}
