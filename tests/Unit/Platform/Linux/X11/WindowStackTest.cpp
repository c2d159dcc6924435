#include "Zorvane/Platform/Linux/X11/WindowStack.hpp"

#include <gtest/gtest.h>

namespace zorvane {
namespace {

std::vector<std::uint32_t> order(const WindowStack& stack) {
    std::vector<std::uint32_t> ids;
    for (const auto& window : stack.windows()) {
        ids.push_back(window->id);
    }
    return ids;
}

TEST(WindowStack, FollowsEveryWayOfRestacking) {
    using IDs = std::vector<std::uint32_t>;
    WindowStack stack;
    for (const std::uint32_t id : {1, 2, 3, 4}) {
        stack.add(id);
    }
    EXPECT_TRUE(stack.placeAbove(4, 1));
    EXPECT_EQ(order(stack), (IDs{1, 4, 2, 3}));
    EXPECT_TRUE(stack.placeAbove(1, 3));
    EXPECT_EQ(order(stack), (IDs{4, 2, 3, 1}));
    EXPECT_TRUE(stack.placeAbove(3, 0)) << "no sibling is the bottom";
    EXPECT_EQ(order(stack), (IDs{3, 4, 2, 1}));
    EXPECT_FALSE(stack.placeAbove(4, 3)) << "it is there already";
    EXPECT_FALSE(stack.placeAbove(3, 0));
    EXPECT_FALSE(stack.placeAbove(9, 3)) << "of a window that has gone nothing is known";
    EXPECT_TRUE(stack.raise(3));
    EXPECT_FALSE(stack.raise(3));
    EXPECT_EQ(order(stack), (IDs{4, 2, 1, 3}));
    stack.remove(2);
    stack.add(4);
    EXPECT_EQ(order(stack), (IDs{1, 3, 4})) << "a number that is used again is another window, on top";
    EXPECT_EQ(stack.find(2), nullptr);
}

}  // namespace
}  // namespace zorvane
