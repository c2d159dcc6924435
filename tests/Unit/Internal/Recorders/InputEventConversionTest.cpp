#include "Zorvane/Internal/Recorders/InputEventConversion.hpp"

#include <gtest/gtest.h>

#include <set>

namespace zorvane {
namespace {

TEST(InputEventConversion, NamesTheButtonOfPressesAndDrags) {
    const auto button = [](int type, int number) {
        return mouseButton(CGEvent{.type = static_cast<CGEventType>(type), .mouseButtonNumber = number});
    };
    for (const int type : {1, 2, 6}) {
        EXPECT_EQ(button(type, 2), ZVMouseButton::primary) << type;
    }
    for (const int type : {3, 4, 7}) {
        EXPECT_EQ(button(type, 2), ZVMouseButton::secondary) << type;
    }
    for (const int type : {25, 26, 27}) {
        EXPECT_EQ(button(type, 2), ZVMouseButton::center) << type;
        EXPECT_EQ(button(type, 3), ZVMouseButton::other) << type;
    }
    for (const int type : {0, 5, 10, 11, 12}) {
        EXPECT_EQ(button(type, 0), std::nullopt) << type;
    }
}

TEST(InputEventConversion, KnowsEachNamedKeyByItsCode) {
    const auto keyType = [](int code) { return keyboardKeyType(CGEvent{.keyboardEventKeycode = code}); };
    EXPECT_EQ(keyType(36), ZVKeyboardKeyType::return_);
    EXPECT_EQ(keyType(51), ZVKeyboardKeyType::delete_);
    EXPECT_EQ(keyType(96), ZVKeyboardKeyType::f5);
    EXPECT_EQ(keyType(80), ZVKeyboardKeyType::f19);
    std::set<ZVKeyboardKeyType> named;
    int codes = 0;
    for (int code = -2; code < 256; ++code) {
        if (keyType(code) != ZVKeyboardKeyType::character) {
            named.insert(keyType(code));
            ++codes;
        }
    }
    EXPECT_EQ(named.size(), 34U);
    EXPECT_EQ(codes, 34) << "each by one code";
    EXPECT_EQ(keyType(76), ZVKeyboardKeyType::character) << "enter of the numeric pad";
}

TEST(InputEventConversion, GathersTheModifiersOfAllBits) {
    EXPECT_EQ(toZVInputModifierSet(CGEventFlags::none), ZVInputModifiers{});
    EXPECT_EQ(toZVInputModifierSet(static_cast<CGEventFlags>(0x20000 | 0x100000 | 0x100)),
              (ZVInputModifiers{ZVInputModifier::shift, ZVInputModifier::command}));
    EXPECT_EQ(toZVInputModifierSet(static_cast<CGEventFlags>(0x9F0000)).size(), 6U);
}

}  // namespace
}  // namespace zorvane
