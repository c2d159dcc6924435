// What the concurrency layer costs on the paths where it counts: each sample passes several synchronous blocks.
#include <benchmark/benchmark.h>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
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

Task<int> immediate() {
    co_return 1;
}

Task<int> awaitMany(int count) {
    int sum = 0;
    for (int i = 0; i < count; ++i) {
        sum += co_await immediate();
    }
    co_return sum;
}

void awaitATaskThatFinishesAtOnce(benchmark::State& state) {
    constexpr int count = 1000;
    for (auto _ : state) {
        benchmark::DoNotOptimize(awaitMany(count).get());
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(awaitATaskThatFinishesAtOnce);

}  // namespace
}  // namespace zorvane
