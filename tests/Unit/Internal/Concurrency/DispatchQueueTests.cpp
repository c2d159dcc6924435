#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Zorvane/Internal/Concurrency/Activity.hpp"

namespace zorvane {
namespace {

TEST(DispatchQueue, SyncReturnsTheResultOfTheBlockAndThrowsWhatItThrows) {
    const auto queue = DispatchQueue::serial("results");
    EXPECT_EQ(queue.sync([] { return std::make_unique<int>(4); }).operator*(), 4);
    int value = 0;
    int& reference = queue.sync([&value]() -> int& { return value; });
    EXPECT_EQ(&reference, &value);
    EXPECT_THROW(queue.syncBarrier([] { throw std::runtime_error("no"); }), std::runtime_error);
    EXPECT_EQ(queue.sync([] { return 1; }), 1) << "the throw has left the queue";
}

TEST(DispatchQueue, SerialRunsAsynchronousAndSynchronousBlocksInTheOrderOfArrival) {
    const auto queue = DispatchQueue::serial("order");
    std::vector<int> order;
    for (int i = 0; i < 100; ++i) {
        queue.async([&order, i, payload = std::make_unique<int>(i)] { order.push_back(*payload); });
    }
    queue.sync([&order] { order.push_back(100); });
    ASSERT_EQ(order.size(), 101u);
    for (int i = 0; i <= 100; ++i) {
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
    }
}

TEST(DispatchQueue, SerialAdmitsOneThreadAtATime) {
    const auto queue = DispatchQueue::serial("contended");
    int count = 0;  // unguarded but for the queue: the thread sanitizer watches
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&] {
                for (int i = 0; i < 5000; ++i) {
                    queue.sync([&count] { ++count; });
                    if (i % 64 == 0) {
                        queue.async([&count] { ++count; });
                    }
                }
            });
        }
    }
    EXPECT_EQ(queue.sync([&count] { return count; }), 4 * (5000 + 79));
}

TEST(DispatchQueue, ConcurrentRunsPlainBlocksTogether) {
    const auto queue = DispatchQueue::concurrent("readers");
    std::latch together(3);
    queue.async([&together] { together.arrive_and_wait(); });
    std::jthread reader([&] { queue.sync([&together] { together.arrive_and_wait(); }); });
    queue.sync([&together] { together.arrive_and_wait(); });
    reader.join();
    queue.syncBarrier([] {});  // all blocks have left the latch
}

TEST(DispatchQueue, BarrierWaitsForBlocksBeforeItAndHoldsUpBlocksBehindIt) {
    const auto queue = DispatchQueue::concurrent("barrier");
    std::vector<std::string> order;
    std::latch readerIn(1);
    std::latch readerMayGo(1);
    queue.async([&] {
        readerIn.count_down();
        readerMayGo.wait();
        order.push_back("reader before");
    });
    readerIn.wait();
    queue.asyncBarrier([&order] { order.push_back("barrier"); });
    queue.async([&order] { order.push_back("reader behind"); });
    readerMayGo.count_down();
    queue.syncBarrier([] {});
    EXPECT_EQ(order, (std::vector<std::string>{"reader before", "barrier", "reader behind"}));
}

TEST(DispatchQueue, BarrierWritesAreNeverSeenHalfDone) {
    const auto queue = DispatchQueue::concurrent("pair");
    std::pair<int, int> pair;
    std::atomic<bool> stop = false;
    std::vector<std::jthread> readers;
    for (int thread = 0; thread < 3; ++thread) {
        readers.emplace_back([&] {
            while (!stop) {
                const auto seen = queue.sync([&pair] { return pair; });
                ASSERT_EQ(seen.first, seen.second);
            }
        });
    }
    for (int i = 1; i <= 300; ++i) {
        queue.syncBarrier([&pair, i] {
            pair.first = i;
            pair.second = i;
        });
    }
    stop = true;
}

TEST(DispatchQueue, KnowsWhetherTheCallerIsOnIt) {
    const auto outer = DispatchQueue::serial("outer");
    const auto inner = DispatchQueue::concurrent("inner");
    EXPECT_FALSE(outer.isCurrent());
    outer.sync([&] {
        inner.sync([&] {
            EXPECT_TRUE(outer.isCurrent());
            EXPECT_TRUE(inner.isCurrent());
        });
        EXPECT_FALSE(inner.isCurrent());
        std::jthread([&] { EXPECT_FALSE(outer.isCurrent()); });
    });
    EXPECT_FALSE(outer.isCurrent());
    outer.async([&] { EXPECT_TRUE(outer.isCurrent()); });
    outer.sync([] {});
}

TEST(DispatchQueueDeathTest, EntersItselfOnlyToEndTheProcessWithAMessage) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto queue = DispatchQueue::serial("mine");
    EXPECT_DEATH(queue.sync([&] { queue.sync([] {}); }), "queue \"mine\".*wait for the block that encloses it");
    EXPECT_DEATH(queue.sync([&] { queue.preconditionNotOnQueue(); }), "queue \"mine\"");
    EXPECT_DEATH(queue.preconditionOnQueue(), "queue \"mine\"");
    queue.preconditionNotOnQueue();
}

TEST(DispatchQueue, LivesUntilItsAsynchronousBlocksHaveRun) {
    std::atomic<int> ran = 0;
    {
        const auto queue = DispatchQueue::serial("short-lived");
        for (int i = 0; i < 10; ++i) {
            queue.async([&ran] { ++ran; });
        }
    }
    Activity::waitUntilIdle();
    EXPECT_EQ(ran, 10);
}

TEST(DispatchQueue, GivesItsLabelToTheThreadOfAnAsynchronousBlock) {
    const auto queue = DispatchQueue::serial("ScreenRecorder.StartingQueue");
    std::string name(16, '\0');
    queue.async([&name] { pthread_getname_np(pthread_self(), name.data(), name.size()); });
    queue.sync([] {});
    EXPECT_STREQ(name.c_str(), "StartingQueue");
}

TEST(DispatchQueue, PoolJobsThatAllWaitForABlockOfThePoolStillGetTheirTurn) {
    const auto blocked = DispatchQueue::concurrent("waiting jobs");
    const auto queue = DispatchQueue::serial("waited for");
    constexpr int jobs = 32;
    std::atomic<int> done = 0;
    std::latch begun(1);
    queue.async([&begun] { begun.wait(); });
    for (int i = 0; i < jobs; ++i) {
        blocked.async([&] {
            queue.async([] {});
            queue.sync([&done] { ++done; });
        });
    }
    begun.count_down();
    blocked.syncBarrier([] {});
    EXPECT_EQ(done, jobs);
}

}  // namespace
}  // namespace zorvane
