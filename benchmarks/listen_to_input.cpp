// Listens to mouse and keyboard while another process operates them at a steady rate, and then while nobody does.
// Prints one JSON object: how many events got lost, how far their times are off, how long they took, what it cost.
//
//     listen_to_input [--rate EVENTS_PER_SECOND] [--seconds N]
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <span>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGEvents.hpp"
#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"
#include "clients/TestWindow.hpp"

namespace {

using namespace zorvane;
using benchmarks::Clock;

struct Heard {
    double timestamp;
    double arrival;
};

double now() {
    return benchmarks::seconds(Clock::now());
}

/// Two processes see it.
std::span<double> sharedTimes(std::size_t count) {
    void* memory = mmap(nullptr, count * sizeof(double), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("listen_to_input: no shared memory");
    }
    return {static_cast<double*>(memory), count};
}

/// Of ten operations eight move the pointer, then a key goes down and up.
void operate(xcb_connection_t* connection, xcb_window_t root, std::size_t index) {
    constexpr std::uint8_t letter = 38;
    const auto place = static_cast<std::int16_t>(index % 500);
    switch (index % 10) {
        case 8:
            xcb_test_fake_input(connection, XCB_KEY_PRESS, letter, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
            break;
        case 9:
            xcb_test_fake_input(connection, XCB_KEY_RELEASE, letter, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
            break;
        default:
            xcb_test_fake_input(connection, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, root, place, place, 0);
    }
    xcb_flush(connection);  // no question, since the answer would make the server hand over what it recorded
}

/// In steps that fall on no certain part of a millisecond.
Clock::time_point timeOf(std::size_t index, double rate, Clock::time_point start) {
    constexpr double goldenRatio = 0.618033988749895;
    const double count = static_cast<double>(index);
    const double jitter = count * goldenRatio - std::floor(count * goldenRatio);
    return start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>((count + jitter) / rate));
}

/// Notes when each operation began.
void operateAll(std::span<double> times, double rate) {
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const auto start = Clock::now();
    for (std::size_t index = 0; index < times.size(); ++index) {
        std::this_thread::sleep_until(timeOf(index, rate, start));
        times[index] = now();
        operate(connection, root, index);
    }
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    xcb_disconnect(connection);
}

struct Use {
    double cpu;
    long switches;
};

Use useSoFar() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return {seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_nvcsw};
}

/// In milliseconds: the middle one and the worst.
void printSpread(const char* name, std::vector<double> values) {
    std::sort(values.begin(), values.end());
    std::printf("\"%s\": {\"median\": %.3f, \"worst\": %.3f}, ", name, 1e3 * values[values.size() / 2],
                1e3 * values.back());
}

void report(std::span<const double> times, const std::vector<Heard>& heard) {
    std::vector<double> errors;
    std::vector<double> delays;
    bool isOrdered = true;
    for (std::size_t index = 0; index < std::min(times.size(), heard.size()); ++index) {
        errors.push_back(std::abs(heard[index].timestamp - times[index]));
        delays.push_back(heard[index].arrival - times[index]);
        isOrdered = isOrdered && (index == 0 || heard[index].timestamp >= heard[index - 1].timestamp);
    }
    std::printf("\"operated\": %zu, \"heard\": %zu, \"ordered\": %s, ", times.size(), heard.size(),
                isOrdered ? "true" : "false");
    if (!errors.empty()) {
        printSpread("timeError", errors);
        printSpread("delay", delays);
    }
}

void printUse(const char* name, const Use& before, const Use& after) {
    std::printf("\"%s\": {\"cpu\": %.4f, \"switches\": %ld}", name, after.cpu - before.cpu,
                after.switches - before.switches);
}

void measure(double rate, double seconds) {
    const auto times = sharedTimes(static_cast<std::size_t>(rate * seconds));
    std::vector<Heard> heard;
    heard.reserve(2 * times.size());
    const Platform platform = makeLinuxPlatform();
    const auto listener = platform.events->tapCreate(~CGEventMask{0}, [&](const CGEvent& event) {
        heard.push_back({event.nsEvent ? event.nsEvent->timestamp : 0, now()});
    });
    const Use idle = useSoFar();
    const pid_t child = fork();
    if (child == 0) {
        operateAll(times, rate);
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    listener->flush();
    const Use busy = useSoFar();
    std::this_thread::sleep_for(std::chrono::seconds(2));
    const Use resting = useSoFar();
    std::this_thread::sleep_for(std::chrono::seconds(3));
    const Use rested = useSoFar();
    std::printf("{");
    report(times, heard);
    printUse("listening", idle, busy);
    std::printf(", ");
    printUse("resting", resting, rested);
    std::printf("}\n");
}

}  // namespace

int main(int count, char** arguments) {
    try {
        measure(benchmarks::argument(count, arguments, "--rate", 1000),
                benchmarks::argument(count, arguments, "--seconds", 10));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
