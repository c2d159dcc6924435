#include "Zorvane/Internal/RingBuffer.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace zorvane {
namespace {

template <class T>
std::vector<T> elementsOf(const RingBuffer<T>& ring) {
    std::vector<T> elements;
    for (const T& element : ring) {
        elements.push_back(element);
    }
    return elements;
}

RingBuffer<int> ringOf(std::size_t capacity, int appended) {
    RingBuffer<int> ring(capacity);
    for (int element = 1; element <= appended; ++element) {
        ring.append(element);
    }
    return ring;
}

TEST(RingBufferTest, KeepsTheNewestElementsOldestFirst) {
    struct Case {
        std::size_t capacity;
        int appended;
        std::vector<int> expected;
    };
    const std::vector<Case> cases{{3, 0, {}},        {3, 2, {1, 2}},    {3, 3, {1, 2, 3}}, {3, 4, {2, 3, 4}},
                                  {3, 5, {3, 4, 5}}, {3, 6, {4, 5, 6}}, {1, 1, {1}},       {1, 4, {4}}};
    for (const Case& row : cases) {
        const RingBuffer<int> ring = ringOf(row.capacity, row.appended);
        EXPECT_EQ(elementsOf(ring), row.expected) << row.capacity << " slots, " << row.appended << " appended";
        EXPECT_EQ(ring.count(), row.expected.size());
        EXPECT_EQ(ring.last(), row.expected.empty() ? std::nullopt : std::optional(row.expected.back()));
    }
}

TEST(RingBufferTest, ReleasesWhatFallsOutAndWhatIsCleared) {
    const auto first = std::make_shared<int>(1);
    const auto second = std::make_shared<int>(2);
    RingBuffer<std::shared_ptr<int>> ring(1);
    ring.append(first);
    ring.append(second);
    EXPECT_EQ(first.use_count(), 1);
    ring.clear();
    EXPECT_EQ(second.use_count(), 1);
    EXPECT_EQ(ring.count(), 0u);

    ring.append(first);
    EXPECT_EQ(ring.last(), first) << "goes on after a clear";
}

TEST(RingBufferTest, CopiesAndIteratorsKeepWhatTheyTook) {
    RingBuffer<int> ring = ringOf(3, 5);
    RingBuffer<int> copy = ring;
    auto iterator = ring.makeIterator();
    ring.append(6);
    copy.append(60);
    EXPECT_EQ(elementsOf(ring), (std::vector<int>{4, 5, 6}));
    EXPECT_EQ(elementsOf(copy), (std::vector<int>{4, 5, 60}));
    ring.clear();
    EXPECT_EQ(*iterator, 3);
    ++iterator;
    EXPECT_EQ(*iterator, 4);
}

TEST(RingBufferTest, IsReadWhileItIsWritten) {
    RingBuffer<int> ring(3);
    std::jthread writer([&ring] {
        for (int element = 0; element < 2000; ++element) {
            ring.append(element);
        }
    });
    for (int round = 0; round < 500; ++round) {
        const std::vector<int> seen = elementsOf(ring);
        for (std::size_t index = 1; index < seen.size(); ++index) {
            EXPECT_EQ(seen[index], seen[index - 1] + 1);
        }
    }
}

TEST(RingBufferDeathTest, ACapacityOfZeroEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(RingBuffer<int>(0), "capacity of at least 1");
}

}  // namespace
}  // namespace zorvane
