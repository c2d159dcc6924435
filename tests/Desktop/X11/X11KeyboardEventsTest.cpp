#include <cstdlib>
#include <optional>
#include <ostream>
#include <string>

#include "tests/Desktop/X11/X11EventsFixture.hpp"
#include "tests/Support/WaitUntil.hpp"

namespace zorvane {
namespace {

using testing::ElementsAre;
using Type = CGEventType;

// Keys by the numbers they have on a PC.
constexpr std::uint8_t z = 29, a = 38, leftShift = 50, altGr = 108, leftAlt = 64, enter = 36, menu = 135;

/// A keyboard event with what matters of it.
struct Typed {
    Type type;
    CGEventFlags flags;
    std::optional<std::string> characters;

    bool operator==(const Typed&) const = default;
    friend void PrintTo(const Typed& typed, std::ostream* stream) {
        *stream << "type " << static_cast<unsigned>(typed.type) << " flags " << static_cast<unsigned>(typed.flags)
                << " characters " << typed.characters.value_or("(none)");
    }
};

class X11KeyboardEventsTest : public X11EventsTest {
  protected:
    static void setLayout(const std::string& arguments) {
        ASSERT_EQ(std::system(("setxkbmap " + arguments).c_str()), 0) << "setxkbmap " << arguments;
    }

    std::vector<Typed> typed() {
        std::vector<Typed> all;
        for (const CGEvent& event : heard_.all()) {
            all.push_back({event.type, event.flags, event.nsEvent->characters});
        }
        return all;
    }

    std::vector<std::string> pressed() {
        std::vector<std::string> all;
        for (const CGEvent& event : heard_.all()) {
            if (event.type == Type::keyDown) {
                all.push_back(event.nsEvent->characters.value_or("(none)"));
            }
        }
        return all;
    }

    X11TestUser user_;
};

TEST_F(X11KeyboardEventsTest, KeysComeWithTheirTextAndModifiersWithTheFlagsTheyMake) {
    setLayout("us");
    const auto listener = listen();
    user_.moveTo(12, 34).keyDown(leftShift).type(a).keyUp(leftShift).type(enter).type(altGr).keyDown(leftAlt).click(1);
    user_.keyUp(leftAlt).act();
    listener->flush();
    using enum CGEventFlags;
    EXPECT_THAT(typed(), ElementsAre(Typed{Type::mouseMoved, none, {}}, Typed{Type::flagsChanged, maskShift, {}},
                                     Typed{Type::keyDown, maskShift, "A"}, Typed{Type::keyUp, maskShift, "A"},
                                     Typed{Type::flagsChanged, none, {}}, Typed{Type::keyDown, none, "\r"},
                                     Typed{Type::keyUp, none, "\r"}, Typed{Type::flagsChanged, maskAlternate, {}},
                                     Typed{Type::flagsChanged, none, {}}, Typed{Type::flagsChanged, maskAlternate, {}},
                                     Typed{Type::leftMouseDown, maskAlternate, {}},
                                     Typed{Type::leftMouseUp, maskAlternate, {}}, Typed{Type::flagsChanged, none, {}}))
        << "this layout has a second Alt in AltGr's place";
    EXPECT_EQ(heard_.all().at(5).keyboardEventKeycode, 36);
    EXPECT_EQ(heard_.all().at(5).location, (CGPoint{12, 34}));
}

TEST_F(X11KeyboardEventsTest, ASwitchOfLayoutsWithinABurstIsFollowedKeyByKey) {
    setLayout("us,ru -option grp:menu_toggle");
    const auto listener = listen();
    user_.type(a).type(menu).type(a).type(menu).type(a).act();
    listener->flush();
    EXPECT_THAT(pressed(), ElementsAre("a", "ф", "a"));
}

TEST_F(X11KeyboardEventsTest, ANewLayoutIsFollowed) {
    setLayout("us");
    const auto listener = listen();
    user_.type(z).act();
    listener->flush();  // the change comes sooner than any person could make it
    setLayout("de");
    user_.type(z).act();
    listener->flush();
    EXPECT_THAT(pressed(), ElementsAre("y", "z"));
}

TEST_F(X11KeyboardEventsTest, AKeyThatIsGivenAnotherSignIsFollowed) {
    setLayout("us");
    const auto listener = listen();
    user_.type(z).act();
    listener->flush();
    user_.relabel(z, 'x').type(z).act();
    listener->flush();
    EXPECT_THAT(pressed(), ElementsAre("y", "x"));
}

TEST_F(X11KeyboardEventsTest, AKeyThatIsHeldRepeatsAndSaysSo) {
    const auto listener = listen();
    user_.keyDown(a).act();
    waitUntil([&] { return heard_.all().size() >= 3; });
    const auto events = heard_.all();
    EXPECT_EQ(events[0].keyboardEventAutorepeat, 0);
    EXPECT_EQ(events[1].type, Type::keyDown);
    EXPECT_EQ(events[1].keyboardEventAutorepeat, 1);
    EXPECT_EQ(events[2].keyboardEventAutorepeat, 1);
    EXPECT_GT(events[2].nsEvent->timestamp, events[1].nsEvent->timestamp);
    user_.keyUp(a).act();
}

TEST_F(X11KeyboardEventsTest, WhatAnotherProgramGrabsIsHeardAllTheSame) {
    const auto listener = listen();
    user_.grabAll().type(a).click(1).act();
    listener->flush();
    EXPECT_THAT(typed(), ElementsAre(Typed{Type::keyDown, {}, "a"}, Typed{Type::keyUp, {}, "a"},
                                     Typed{Type::leftMouseDown, {}, {}}, Typed{Type::leftMouseUp, {}, {}}));
}

TEST_F(X11KeyboardEventsTest, WhatWasPressedBeforeIsHeld) {
    setLayout("us");
    user_.keyDown(leftShift).act();
    const auto listener = listen();
    user_.type(a).keyUp(leftShift).act();
    listener->flush();
    EXPECT_THAT(typed(), ElementsAre(Typed{Type::keyDown, CGEventFlags::maskShift, "A"},
                                     Typed{Type::keyUp, CGEventFlags::maskShift, "A"},
                                     Typed{Type::flagsChanged, CGEventFlags::none, {}}));
}

}  // namespace
}  // namespace zorvane
