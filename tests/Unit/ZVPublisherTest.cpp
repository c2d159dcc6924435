#include "Zorvane/ZVPublisher.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/CurrentValueSubject.hpp"

namespace zorvane {
namespace {

using Values = std::vector<int>;

/// Does it on the main executor, where subjects are written, and waits until all that follows is done.
void onMain(std::function<void()> work) {
    ZVMainExecutor::post(std::move(work));
    Activity::waitUntilIdle();
}

/// A subject with the value 1, and what a handler has heard.
class ZVPublisherTest : public ::testing::Test {
  protected:
    void send(int value) {
        onMain([this, value] { subject->send(value); });
    }
    std::function<void(const int&)> note() {
        return [this](const int& value) {
            EXPECT_TRUE(ZVMainExecutor::isCurrent());
            heard.push_back(value);
        };
    }

    std::optional<CurrentValueSubject<int>> subject{std::in_place, 1};
    Values heard;
};

TEST_F(ZVPublisherTest, ASubscriberHearsTheValueOfNowAndThenEachChangeInOrder) {
    const auto publisher = subject->publisher();
    ZVSubscription subscription = publisher.subscribe(note());
    Activity::waitUntilIdle();
    EXPECT_EQ(heard, Values{1});
    onMain([this] {
        EXPECT_TRUE(subject->update(2));
        EXPECT_FALSE(subject->update(2)) << "no change";
        subject->send(2);
        subject->send(3);
    });
    EXPECT_EQ(heard, (Values{1, 2, 2, 3}));
    EXPECT_EQ(publisher.value(), 3);
}

TEST_F(ZVPublisherTest, OnTheMainExecutorTheFirstValueComesInsideTheCall) {
    onMain([this] {
        subject->send(2);
        ZVSubscription subscription = subject->publisher().subscribe(note());
        EXPECT_EQ(heard, Values{2});
    });
}

TEST_F(ZVPublisherTest, NothingIsHeardAfterTheEndOfTheSubscriptionNotEvenTheFirstValue) {
    onMain([this] {
        ZVSubscription early;
        std::thread([&] { early = subject->publisher().subscribe(note()); }).join();
        early.cancel();
    });
    EXPECT_EQ(heard, Values{});
    ZVSubscription subscription = subject->publisher().subscribe(note());
    Activity::waitUntilIdle();
    subscription.cancel();
    send(2);
    EXPECT_EQ(heard, Values{1});
}

TEST_F(ZVPublisherTest, AHandlerMayEndItsOwnSubscriptionAndTheNextOne) {
    ZVSubscription first, second;
    const auto held = std::make_shared<int>(7);
    second = subject->publisher().subscribe([&, held](const int& value) {
        heard.push_back(value);
        if (value == 2) {
            second.cancel();
            first.cancel();
            heard.push_back(*held);  // what the handler holds lives until it returns
        }
    });
    first = subject->publisher().subscribe(note());
    Activity::waitUntilIdle();
    send(2);
    send(3);
    EXPECT_EQ(heard, (Values{1, 1, 2, 7}));
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(ZVPublisherTest, AHandlerThatSubscribesAnotherGivesItEachValueOnce) {
    ZVSubscription inner;
    ZVSubscription outer = subject->publisher().subscribe([&](const int& value) {
        if (value == 2) {
            inner = subject->publisher().subscribe(note());
        }
    });
    Activity::waitUntilIdle();
    send(2);
    send(3);
    EXPECT_EQ(heard, (Values{2, 3}));
}

Task<> collect(ZVAsyncStream<int> stream, Values& values) {
    while (const auto value = co_await stream.next()) {
        values.push_back(*value);
    }
}

TEST_F(ZVPublisherTest, AStreamHoldsEachValueUntilItIsTakenAndLetsGoOfItsTransformWhenItIsDropped) {
    const auto factor = std::make_shared<int>(10);
    auto stream = subject->publisher().values([factor](const int& value) { return value * *factor; });
    send(2);
    send(3);
    {
        TaskHandle<> collector = spawn(collect(std::move(stream), heard));
        Activity::waitUntilIdle();
        EXPECT_EQ(heard, (Values{10, 20, 30}));
        EXPECT_EQ(factor.use_count(), 2);
        collector.cancel();
        Activity::waitUntilIdle();
    }
    EXPECT_EQ(factor.use_count(), 1) << "though the value has not changed since";
    send(4);
    EXPECT_EQ(heard.size(), 3U);
}

TEST_F(ZVPublisherTest, APublisherOutlivesItsSubject) {
    const auto publisher = subject->publisher();
    ZVSubscription subscription = publisher.subscribe(note());
    auto stream = publisher.values();
    Activity::waitUntilIdle();
    subject.reset();
    ZVSubscription late = publisher.subscribe(note());
    Activity::waitUntilIdle();
    EXPECT_EQ(heard, (Values{1, 1}));
    EXPECT_EQ(publisher.value(), 1);
}

TEST_F(ZVPublisherTest, ManyThreadsSubscribeReadAndLeaveWhileTheValueChanges) {
    constexpr int lastValue = 300;
    std::atomic<int> faults = 0;
    std::atomic<int> values = 0;
    const auto comeAndGo = [&] {
        for (int round = 0; round < 100; ++round) {
            auto before = std::make_shared<int>(0);
            ZVSubscription subscription = subject->publisher().subscribe([&, before](const int& value) {
                faults += value < *before || !ZVMainExecutor::isCurrent() ? 1 : 0;
                *before = value;
                ++values;
            });
            faults += subject->publisher().value() < 1 ? 1 : 0;
            const auto stream = subject->publisher().values();
        }
    };
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count) {
        threads.emplace_back(comeAndGo);
    }
    ZVSubscription lasting = subject->publisher().subscribe(note());
    for (int value = 2; value <= lastValue; ++value) {
        ZVMainExecutor::post([this, value] { subject->send(value); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    Activity::waitUntilIdle();
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(heard.back(), lastValue);
    EXPECT_TRUE(std::ranges::is_sorted(heard));
}

}  // namespace
}  // namespace zorvane
