#include "Zorvane/Platform/Linux/X11/Input/DeliveryPacer.hpp"

#include <gtest/gtest.h>

namespace zorvane {
namespace {

using Step = DeliveryPacer::Step;
using namespace std::chrono_literals;

TEST(DeliveryPacerTest, AsksFromTheFirstInputUntilNothingWasHeardForAWhileAndThenRests) {
    DeliveryPacer pacer;
    EXPECT_EQ(pacer.next(false, 1s), Step::none);
    EXPECT_EQ(pacer.deadline(), std::nullopt);
    EXPECT_EQ(pacer.next(true, 2s), Step::beginAsking);
    EXPECT_EQ(pacer.deadline(), 2s + DeliveryPacer::interval);
    EXPECT_EQ(pacer.next(true, 2s + 1ms), Step::none);
    EXPECT_EQ(pacer.next(false, 2s + DeliveryPacer::interval), Step::ask);
    EXPECT_EQ(pacer.next(false, 3s), Step::ask);
    EXPECT_EQ(pacer.next(false, 3s + 1ms), Step::none);
    EXPECT_EQ(pacer.next(false, 3s + DeliveryPacer::interval), Step::rest);
    EXPECT_EQ(pacer.deadline(), std::nullopt);
    EXPECT_EQ(pacer.next(false, 9s), Step::none);
    EXPECT_EQ(pacer.next(true, 9s), Step::beginAsking);
}

}  // namespace
}  // namespace zorvane
