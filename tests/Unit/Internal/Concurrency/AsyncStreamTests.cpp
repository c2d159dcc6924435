#include "Zorvane/Internal/Concurrency/AsyncStream.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"

namespace zorvane {
namespace {

template <class T>
Task<std::vector<T>> collect(AsyncStream<T> stream) {
    std::vector<T> values;
    while (auto value = co_await stream.next()) {
        values.push_back(std::move(*value));
    }
    co_return values;
}

TEST(AsyncStream, UnboundedKeepsAllValuesInOrderUpToTheEnd) {
    auto [stream, source] = AsyncStream<int>::make(StreamBuffering::unbounded());
    source.yield(1);
    source.yield(2);
    auto collected = spawn(collect(std::move(stream)));
    source.yield(3);
    source.finish();
    source.yield(4);
    EXPECT_EQ(collected.value().get(), (std::vector{1, 2, 3}));
}

TEST(AsyncStream, NewestOnlyLosesTheOldest) {
    auto [stream, source] = AsyncStream<int>::make(StreamBuffering::newest(2));
    for (int i = 0; i < 5; ++i) {
        source.yield(i);
    }
    source.finish();
    EXPECT_EQ(collect(std::move(stream)).get(), (std::vector{3, 4}));
}

TEST(AsyncStream, EndsWhenAllSourcesAreGone) {
    auto [stream, source] = AsyncStream<int>::make(StreamBuffering::unbounded());
    auto collected = spawn(collect(std::move(stream)));
    auto copy = std::make_unique<AsyncStreamSource<int>>(source);
    { auto gone = std::move(source); }
    copy->yield(1);
    copy.reset();
    EXPECT_EQ(collected.value().get(), std::vector{1});
}

TEST(AsyncStream, ConsumerThatGoesAwayEndsItForTheSource) {
    int terminations = 0;
    auto pair = AsyncStream<std::shared_ptr<int>>::make(StreamBuffering::unbounded());
    auto& source = pair.second;
    source.onTermination([&terminations] { ++terminations; });
    auto held = std::make_shared<int>(1);
    source.yield(held);
    EXPECT_EQ(held.use_count(), 2);
    { auto dropped = std::move(pair.first); }
    EXPECT_EQ(terminations, 1);
    EXPECT_EQ(held.use_count(), 1);
    source.yield(held);
    source.finish();
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(terminations, 1);
    source.onTermination([&terminations] { ++terminations; });
    EXPECT_EQ(terminations, 2);
}

TEST(AsyncStream, DroppingItEndsACallThatWaits) {
    auto pair = AsyncStream<int>::make(StreamBuffering::unbounded());
    auto waiting = spawn(pair.first.next());
    { auto dropped = std::move(pair.first); }
    EXPECT_EQ(waiting.value().get(), std::nullopt);
}

TEST(AsyncStream, CancelledWaitLosesNothing) {
    auto pair = AsyncStream<int>::make(StreamBuffering::unbounded());
    auto& [stream, source] = pair;
    auto waiting = spawn(stream.next());
    waiting.cancel();
    EXPECT_THROW(waiting.value().get(), ZVCancelled);
    source.yield(1);
    EXPECT_EQ(stream.next().get(), 1);
}

TEST(AsyncStream, CarriesAllValuesFromSeveralThreads) {
    auto pair = AsyncStream<int>::make(StreamBuffering::unbounded());
    auto collected = spawn(collect(std::move(pair.first)));
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([source = pair.second] {
                for (int i = 0; i < 1000; ++i) {
                    source.yield(i);
                }
            });
        }
    }
    pair.second.finish();
    EXPECT_EQ(collected.value().get().size(), 4000u);
}

}  // namespace
}  // namespace zorvane
