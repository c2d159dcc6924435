// What programs write on their windows: text of any kind, and where they run.
#include <gtest/gtest.h>

#include "Zorvane/Platform/Linux/X11/WindowOwner.hpp"
#include "Zorvane/Platform/Linux/X11/XText.hpp"

namespace zorvane {
namespace {

TEST(XText, CompoundTextSwitchesBetweenCharacterSets) {
    const struct {
        std::string_view bytes;
        std::string_view text;
    } cases[] = {
        {"plain", "plain"},
        {"\xE9t\xE9", "\xC3\xA9t\xC3\xA9"},
        {"\x1B%G\xE2\x82\xAC\x1B%@\xE9", "\xE2\x82\xAC\xC3\xA9"},
        {"\x1B%G\xE2\x82\xAC", "\xE2\x82\xAC"},
        {"a\x1B-L\xD0\x1B-A\xE9", "a\xEF\xBF\xBD\xC3\xA9"},         // a Cyrillic letter between Latin ones
        {"\x1B$(B\x46\x7C\x1B(Bok", "\xEF\xBF\xBD\xEF\xBF\xBDok"},  // two bytes of a Japanese one
        {"a\x1B%/1\x80\x83xyzb",
         "a\xEF\xBF\xBD"
         "b"},  // a segment in an encoding of its own
        {"a\x1B%/1\x80", "a"},
        {"a\x1B", "a"},
        {"a\x1B$", "a"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(decodeXText(each.bytes, XTextEncoding::compoundText), each.text);
    }
}

TEST(XText, ALongTextIsCutBetweenCharacters) {
    std::string euros;
    for (std::size_t index = 0; index < longestXText + 5; ++index) {
        euros += "\xE2\x82\xAC";
    }
    EXPECT_EQ(decodeXText(euros, XTextEncoding::utf8), euros.substr(0, 3 * longestXText));
    EXPECT_EQ(decodeXText("\x1B%G" + euros, XTextEncoding::compoundText), euros.substr(0, 3 * longestXText));
    EXPECT_EQ(decodeXText(std::string(5000, '\xE9'), XTextEncoding::latin1).size(), 2 * longestXText);
}

TEST(WindowOwner, AMachineIsKnownByItsShortNameToo) {
    EXPECT_TRUE(isSameMachine("box", "box"));
    EXPECT_TRUE(isSameMachine("box.example.org", "box"));
    EXPECT_TRUE(isSameMachine("box", "box.example.org"));
    EXPECT_TRUE(isSameMachine(std::string_view("box\0", 4), "box"));
    EXPECT_FALSE(isSameMachine("box.example.org", "box.example.com"));
    EXPECT_FALSE(isSameMachine("boxer", "box"));
    EXPECT_FALSE(isSameMachine("", "box"));
    EXPECT_FALSE(isSameMachine("", ""));
}

}  // namespace
}  // namespace zorvane
