#include "Zorvane/Internal/Recorders/InputRecorder/InputEventCreation.hpp"

#include <gtest/gtest.h>

#include "Zorvane/ZVError.hpp"
#include "tests/Support/InputEventText.hpp"

namespace zorvane {
namespace {

CGEvent keyEvent(std::int64_t keycode, std::optional<std::string> characters, std::optional<std::string> unmodified) {
    CGEvent event;
    event.type = CGEventType::keyDown;
    event.keyboardEventKeycode = keycode;
    event.nsEvent = NSEvent{1, std::move(characters), std::move(unmodified)};
    return event;
}

TEST(InputEventCreation, AKeyIsShownByItsNameOrByWhatItTypes) {
    struct Row {
        std::int64_t keycode;
        std::optional<std::string> characters;
        std::optional<std::string> unmodified;
        const char* text;
    };
    const Row rows[] = {
        {0, "a", "a", "down A \"a\""},
        {0, "A", "A", "down A \"A\""},
        {0, "\x01", "a", "down A \"\x01\""},  // with control
        {12, "@", "q", "down Q \"@\""},       // with option
        {18, "1", "1", "down 1 \"1\""},
        {27, "ß", "ß", "down SS \"ß\""},
        {14, "é", "é", "down É \"é\""},
        {34, "ı", "ı", "down I \"ı\""},
        {34, "i", "i", "down I \"i\""},
        {1, "ы", "ы", "down Ы \"ы\""},
        {1, "ﬃ", "ﬃ", "down FFI \"ﬃ\""},
        {1, "あ", "あ", "down あ \"あ\""},
        {24, "", "´", "down ´ \"\""},  // a dead key
        {0, "a", std::nullopt, "down A \"a\""},
        {0, std::nullopt, "a", "down A \"a\""},
        {0, std::nullopt, std::nullopt, "down □"},
        {76, "\r", "\r", "down \r \"\r\""},  // the enter key of the numeric pad
        {36, "\r", "\r", "down return"},
        {96, "", "", "down F5"},
    };
    for (const Row& row : rows) {
        const ZVKeyboardEvent event = createZVKeyboardEvent(keyEvent(row.keycode, row.characters, row.unmodified), {});
        EXPECT_EQ(testing::textOf(ZVInputEvent(event)), std::string("0.000 ") + row.text);
        EXPECT_EQ(event.keySymbol, row.keycode == 36 ? "⏎" : event.keyTitle);
    }
}

TEST(InputEventCreation, WhatIsNoKeyIsRefusedWithATextForTheUser) {
    CGEvent scrolled = keyEvent(0, "a", "a");
    scrolled.type = static_cast<CGEventType>(22);
    CGEvent withoutText = keyEvent(0, "a", "a");
    withoutText.nsEvent.reset();
    for (const auto& [event, debugDescription] : {std::pair(scrolled, "Unknown CGEventType: 22"),
                                                  std::pair(withoutText, "Failed to create NSEvent from CGEvent.")}) {
        try {
            createZVKeyboardEvent(event, {});
            ADD_FAILURE() << "nothing thrown";
        } catch (const ZVError& error) {
            EXPECT_EQ(error.userMessage(), "Failed to record keypress.");
            EXPECT_EQ(error.debugDescription(), debugDescription);
        }
    }
}

}  // namespace
}  // namespace zorvane
