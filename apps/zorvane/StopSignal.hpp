// The signals by which a user or the system asks for an end.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <thread>

namespace zorvane::cli {

/// Listens for SIGINT (Ctrl-C), SIGTERM and SIGHUP as long as it lives.
///
/// A thread reads the signals from a descriptor, so what they cause is ordinary code, not a signal handler. The first
/// one calls back. A SIGINT after that ends the process at once, as if nobody had listened.
class StopSignal {
  public:
    /// Keeps the signals waiting for a listener. Before the first thread starts, since threads inherit it.
    static void block();

    /// `onStop` is called once at most: here if a signal is waiting already, else on the listening thread.
    explicit StopSignal(std::function<void()> onStop);
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

  private:
    struct Stop {
        int signal;
        std::chrono::steady_clock::time_point time;
    };

    void listen();
    void hearPending();
    void signalled(int number);

    const std::function<void()> onStop_;
    int signals_;
    int quit_;
    std::optional<Stop> stop_;  // belongs to the listener: this thread in the constructor, its own from then on
    std::thread thread_;
};

}  // namespace zorvane::cli
