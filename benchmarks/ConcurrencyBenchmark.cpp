// What the concurrency layer costs on the paths where it counts: each sample passes several synchronous blocks.
//
// Processor time, measured on two cores of a shared machine, and the limit that it must not pass there:
//   a synchronous block on an idle queue, serial, plain or barrier   14 ns   50 ns
//   arming an armed watchdog                                         35 ns  120 ns
#include <benchmark/benchmark.h>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/Concurrency/WatchdogTimer.hpp"

namespace zorvane {
namespace {

void syncOnIdleSerialQueue(benchmark::State& state) {
    const auto queue = DispatchQueue::serial("benchmark");
    int value = 0;
    for (auto _ : state) {
        queue.sync([&value] { benchmark::DoNotOptimize(++value); });
    }
}
BENCHMARK(syncOnIdleSerialQueue);

void syncOnIdleConcurrentQueue(benchmark::State& state) {
    const auto queue = DispatchQueue::concurrent("benchmark");
    int value = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(queue.sync([&value] { return value; }));
    }
}
BENCHMARK(syncOnIdleConcurrentQueue);

void syncBarrierOnIdleConcurrentQueue(benchmark::State& state) {
    const auto queue = DispatchQueue::concurrent("benchmark");
    int value = 0;
    for (auto _ : state) {
        queue.syncBarrier([&value] { benchmark::DoNotOptimize(++value); });
    }
}
BENCHMARK(syncBarrierOnIdleConcurrentQueue);

void rearmAnArmedWatchdog(benchmark::State& state) {
    WatchdogTimer timer([] {});
    for (auto _ : state) {
        timer.arm(std::chrono::seconds(10), std::chrono::seconds(1));
    }
}
BENCHMARK(rearmAnArmedWatchdog);

}  // namespace
}  // namespace zorvane
