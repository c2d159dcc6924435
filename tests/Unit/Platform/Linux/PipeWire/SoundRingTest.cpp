// The queue between the real-time thread and the one that makes samples.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/SoundRing.hpp"

namespace zorvane {
namespace {

using testing::ElementsAre;

/// A cycle of two channels that count on from `first`, the second one below zero.
bool pushCount(SoundRing& ring, int first, std::uint32_t frames) {
    std::array<float, 16> up{};
    std::array<float, 16> down{};
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        up[frame] = static_cast<float>(first) + static_cast<float>(frame);
        down[frame] = -up[frame];
    }
    const std::array<const float*, 2> channels{up.data(), down.data()};
    return ring.push({.position = first, .frames = frames}, channels);
}

std::vector<float> takeFront(SoundRing& ring) {
    const SoundRing::Parts parts = ring.frontFrames();
    std::vector<float> samples(parts.first.begin(), parts.first.end());
    samples.insert(samples.end(), parts.second.begin(), parts.second.end());
    ring.pop();
    return samples;
}

TEST(SoundRingTest, GivesCyclesInTheirOrderAlsoOverItsEnd) {
    SoundRing ring(2, 5, 4);
    EXPECT_EQ(ring.front(), nullptr);
    for (int first = 1; first < 30; first += 3) {
        ASSERT_TRUE(pushCount(ring, first, 3));
        ASSERT_NE(ring.front(), nullptr);
        EXPECT_EQ(ring.front()->position, first);
        const auto value = static_cast<float>(first);
        EXPECT_THAT(takeFront(ring), ElementsAre(value, -value, value + 1, -value - 1, value + 2, -value - 2));
    }
    EXPECT_EQ(ring.front(), nullptr);
}

TEST(SoundRingTest, WhatDoesNotFitIsLeftOut) {
    SoundRing ring(2, 6, 3);
    EXPECT_TRUE(pushCount(ring, 1, 4));
    EXPECT_FALSE(pushCount(ring, 5, 4)) << "two frames are free";
    EXPECT_TRUE(pushCount(ring, 9, 2));
    EXPECT_TRUE(pushCount(ring, 11, 0));
    EXPECT_FALSE(pushCount(ring, 11, 0)) << "three cycles are there";
    EXPECT_THAT(takeFront(ring), ElementsAre(1, -1, 2, -2, 3, -3, 4, -4));
    EXPECT_EQ(ring.front()->position, 9);
    EXPECT_TRUE(pushCount(ring, 13, 4));
}

TEST(SoundRingTest, AChannelWithoutABufferIsSilent) {
    SoundRing ring(2, 4, 2);
    const std::array<float, 2> sound{0.5f, 0.25f};
    const std::array<const float*, 2> channels{nullptr, sound.data()};
    ring.push({.frames = 2}, channels);
    EXPECT_THAT(takeFront(ring), ElementsAre(0, 0.5f, 0, 0.25f));
}

TEST(SoundRingTest, TwoThreadsSeeWholeCycles) {
    constexpr int cycles = 20000;
    SoundRing ring(2, 64, 8);
    std::thread reader([&ring] {
        for (int expected = 0; expected < cycles;) {
            if (const SoundCycle* cycle = ring.front()) {
                ASSERT_EQ(cycle->position, expected);
                const std::vector<float> samples = takeFront(ring);
                ASSERT_EQ(samples.front(), static_cast<float>(expected));
                ASSERT_EQ(samples.back(), -static_cast<float>(expected + 6));
                ++expected;
            } else {
                std::this_thread::yield();
            }
        }
    });
    for (int position = 0; position < cycles;) {
        if (pushCount(ring, position, 7)) {
            ++position;
        } else {
            std::this_thread::yield();
        }
    }
    reader.join();
}

}  // namespace
}  // namespace zorvane
