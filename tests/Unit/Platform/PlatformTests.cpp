#include "Zorvane/Platform/Platform.hpp"

#include <gtest/gtest.h>

#include "tests/Support/ManualTime.hpp"

namespace zorvane {
namespace {

struct Discovery {
    int number = 0;
};
struct Bucket {
    std::shared_ptr<Discovery> discovery;
};

TEST(Platform, KeepsOneObjectOfATypeUntilAnotherPlatformIsInstalled) {
    int made = 0;
    auto make = [&made] { return std::make_shared<Discovery>(Discovery{++made}); };
    Platform::install(Platform());
    auto before = Platform::current();
    auto first = before->world().shared<Discovery>(make);
    EXPECT_EQ(Platform::current()->world().shared<Discovery>(make), first);

    Platform::install(Platform());
    auto second = Platform::current()->world().shared<Discovery>(make);
    EXPECT_EQ(second->number, 2);
    EXPECT_EQ(first.use_count(), 1) << "the old world has let go of it";
    EXPECT_NE(before, Platform::current());
}

TEST(Platform, LetsOneObjectAskForAnotherWhileItIsMade) {
    Platform::install(Platform());
    auto& world = Platform::current()->world();
    auto bucket = world.shared<Bucket>([&world] {
        return std::make_shared<Bucket>(Bucket{world.shared<Discovery>([] { return std::make_shared<Discovery>(); })});
    });
    EXPECT_EQ(bucket->discovery, world.shared<Discovery>([] { return nullptr; }));
}

TEST(Platform, CompletesMissingBackendsWithTheDefaultOnes) {
    auto clock = std::make_shared<ManualClock>();
    Platform platform;
    platform.clock = clock;
    Platform::install(platform);
    EXPECT_EQ(Platform::current()->clock, clock);
    Platform::install(Platform());
    EXPECT_NE(Platform::current()->clock, clock);
    EXPECT_NE(Platform::current()->clock, nullptr);
}

}  // namespace
}  // namespace zorvane
