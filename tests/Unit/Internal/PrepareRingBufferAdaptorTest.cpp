#include "Zorvane/Internal/PrepareRingBufferAdaptor.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "tests/Support/ManualTime.hpp"

namespace zorvane {
namespace {

using Adaptor = PrepareRingBufferAdaptor<std::string>;

class PrepareRingBufferAdaptorTest : public testing::ManualTimeTest {
  protected:
    /// Starts a wait of 3 seconds and lets it come to rest.
    TaskHandle<std::string> startWaiting() {
        auto handle = spawn(adaptor->waitForItem(3.0, std::make_exception_ptr(std::runtime_error("no sample"))));
        Activity::waitUntilIdle();
        return handle;
    }

    std::vector<std::string> held() const {
        std::vector<std::string> items;
        for (const std::string& item : adaptor->buffer()) {
            items.push_back(item);
        }
        return items;
    }

    std::optional<Adaptor> adaptor{RingBuffer<std::string>(3)};
};

TEST_F(PrepareRingBufferAdaptorTest, AWaitEndsAtOnceWithTheNewestItemHeldAndLeavesItThere) {
    adaptor->append("a");
    adaptor->append("b");
    const auto before = clock->now();
    EXPECT_EQ(clock->complete(startWaiting().value()), "b");
    EXPECT_EQ(clock->now(), before);
    EXPECT_EQ(held(), (std::vector<std::string>{"a", "b"}));
}

TEST_F(PrepareRingBufferAdaptorTest, OneItemResumesAllThatWait) {
    const auto first = startWaiting();
    const auto second = startWaiting();
    adaptor->clear();
    adaptor->append("a");
    adaptor->append("b");
    EXPECT_EQ(clock->complete(first.value()), "a");
    EXPECT_EQ(clock->complete(second.value()), "a");
    EXPECT_EQ(held(), (std::vector<std::string>{"a", "b"}));
}

TEST_F(PrepareRingBufferAdaptorTest, TheCallersErrorComesWhenTheTimeIsUp) {
    const auto waiting = startWaiting();
    const auto before = clock->now();
    EXPECT_THROW(clock->complete(waiting.value()), std::runtime_error);
    EXPECT_EQ(clock->now() - before, std::chrono::seconds(3));

    adaptor->append("late");
    EXPECT_EQ(held(), (std::vector<std::string>{"late"})) << "nobody waits for it any more";
    EXPECT_EQ(clock->pendingTimers(), 0u);
}

TEST_F(PrepareRingBufferAdaptorTest, ACancelledWaitLeavesTheOthersAlone) {
    const auto cancelled = startWaiting();
    const auto other = startWaiting();
    cancelled.cancel();
    EXPECT_THROW(clock->complete(cancelled.value()), ZVCancelled);
    adaptor->append("a");
    EXPECT_EQ(clock->complete(other.value()), "a");
}

TEST_F(PrepareRingBufferAdaptorTest, AWaitOutlivesTheAdaptor) {
    const auto waiting = startWaiting();
    adaptor.reset();
    EXPECT_THROW(clock->complete(waiting.value()), std::runtime_error);
}

}  // namespace
}  // namespace zorvane
