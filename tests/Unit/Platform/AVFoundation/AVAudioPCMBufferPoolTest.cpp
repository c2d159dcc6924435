#include "Zorvane/Platform/AVFoundation/AVAudioPCMBufferPool.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <optional>
#include <utility>
#include <vector>

#include "tests/Support/AllocationCounter.hpp"

namespace zorvane::testing {
namespace {

constexpr AVAudioFormat format{AVAudioCommonFormat::float32, 48000, 2};

TEST(AVAudioPCMBufferPoolTest, NothingIsAllocatedOnceThereAreAsManyBuffersAsAreHeld) {
    AVAudioPCMBufferPool pool(format, 480);
    std::vector<std::shared_ptr<AVAudioPCMBuffer>> held;
    const auto holdFour = [&] {
        while (held.size() < 4) {
            held.push_back(pool.take());
        }
    };
    holdFour();
    EXPECT_EQ(held[3]->format(), format);
    EXPECT_EQ(held[3]->frameCapacity(), 480U);
    const AllocationCounter allocations;
    for (int round = 0; round < 10; ++round) {
        held.clear();
        holdFour();
    }
    if (AllocationCounter::isAvailable()) {
        EXPECT_EQ(allocations.count(), 0U);
    }
    std::sort(held.begin(), held.end());
    EXPECT_EQ(std::unique(held.begin(), held.end()), held.end()) << "a buffer was handed out twice";
}

TEST(AVAudioPCMBufferPoolTest, BuffersAndWhatWatchesThemOutliveThePool) {
    std::optional<AVAudioPCMBufferPool> pool(std::in_place, format, 480);
    std::shared_ptr<AVAudioPCMBuffer> buffer = pool->take();
    const std::weak_ptr<AVAudioPCMBuffer> watch = buffer;
    pool.reset();
    buffer->setFrameLength(480);
    EXPECT_EQ(buffer->bytes().size(), 480 * format.bytesPerFrame());
    buffer.reset();
    EXPECT_TRUE(watch.expired());
}

TEST(AVAudioPCMBufferPoolTest, BuffersComeBackFromOtherThreads) {
    AVAudioPCMBufferPool pool(format, 480);
    std::vector<std::future<bool>> readers;
    for (int round = 0; round < 100; ++round) {
        const auto mark = static_cast<std::byte>(round);
        std::shared_ptr<AVAudioPCMBuffer> buffer = pool.take();
        std::fill(buffer->mutableBytes().begin(), buffer->mutableBytes().end(), mark);
        buffer->setFrameLength(480);
        readers.push_back(std::async(std::launch::async, [read = std::move(buffer), mark]() mutable {
            const std::shared_ptr<const AVAudioPCMBuffer> last = std::move(read);
            return std::all_of(last->bytes().begin(), last->bytes().end(), [&](std::byte b) { return b == mark; });
        }));
    }
    EXPECT_TRUE(std::all_of(readers.begin(), readers.end(), [](std::future<bool>& reader) { return reader.get(); }));
}

}  // namespace
}  // namespace zorvane::testing
