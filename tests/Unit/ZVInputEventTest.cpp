#include "Zorvane/ZVInputEvent.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>

#include "Zorvane/UnknownDiscriminator.hpp"
#include "tests/Support/TemporaryDirectory.hpp"

namespace zorvane {
namespace {

const ZVTime time{1.5, 3, 2};
constexpr std::string_view timeJSON = R"({"seconds":1.5,"timescale":2,"value":3})";

std::string withTime(std::string json) {
    return json.replace(json.find('@'), 1, timeJSON);
}

ZVKeyboardEvent typedA() {
    ZVKeyboardEvent event{.time = time, .keyTitle = "A", .keySymbol = "A", .characters = "a/"};
    event.modifiers = {ZVInputModifier::function, ZVInputModifier::capsLock};
    return event;
}

struct Form {
    ZVInputEvent event;
    std::string json;
};

/// Each payload, with and without the fields that may be absent.
std::vector<Form> forms() {
    ZVMouseEvent click{.mouseEventType = ZVMouseEventType::down, .time = time, .x = -0.25, .y = 1.5};
    click.button = ZVMouseButton::primary;
    click.cursorType = ZVCursorType::iBeam;
    const ZVKeyboardEvent f5{.keyboardEventType = ZVKeyboardEventType::up,
                             .time = time,
                             .keyType = ZVKeyboardKeyType::f5,
                             .keyTitle = "F5",
                             .keySymbol = "F5",
                             .isARepeat = true};
    return {
        {ZVInputEvent(click), R"({"button":"primary","cursorType":"iBeam","modifiers":[],"mouseEventType":"down",)"
                              R"("time":@,"type":"mouse","x":-0.25,"y":1.5})"},
        {ZVInputEvent(ZVMouseEvent{.time = time}),
         R"({"cursorType":"custom","modifiers":[],"mouseEventType":"moved","time":@,"type":"mouse","x":0,"y":0})"},
        {ZVInputEvent(typedA()),
         R"({"characters":"a\/","isARepeat":false,"keySymbol":"A","keyTitle":"A","keyType":"character",)"
         R"("keyboardEventType":"down","modifiers":["capsLock","function"],"time":@,"type":"keyboard"})"},
        {ZVInputEvent(f5), R"({"isARepeat":true,"keySymbol":"F5","keyTitle":"F5","keyType":"f5",)"
                           R"("keyboardEventType":"up","modifiers":[],"time":@,"type":"keyboard"})"},
        {ZVInputEvent(ZVInputModifiersChangedEvent{time, {ZVInputModifier::shift}}),
         R"({"modifiers":["shift"],"time":@,"type":"modifiersChanged"})"},
    };
}

std::string problem(std::string_view json) {
    try {
        ZVInputEvent::fromJSON(json);
    } catch (const std::exception& error) {
        return error.what();
    }
    return "nothing thrown";
}

TEST(ZVInputEvent, IsOneFlatObjectWithItsKeysSortedAndReadsBack) {
    for (const Form& form : forms()) {
        const std::string json = withTime(form.json);
        EXPECT_EQ(form.event.toJSON(), json);
        const ZVInputEvent read = ZVInputEvent::fromJSON(json);
        EXPECT_EQ(read.payload(), form.event.payload()) << json;
        EXPECT_EQ(read.time(), time);
        EXPECT_EQ(read.modifiers(), form.event.modifiers());
    }
}

TEST(ZVInputEvent, ReadsANullAsAbsentAndPassesOverUnknownKeys) {
    for (const Form& form : forms()) {
        auto json = nlohmann::json::parse(withTime(form.json));
        json["later"] = {{"type", {1, 2}}};
        for (const char* key : {"button", "characters"}) {
            if (!json.contains(key)) {
                json[key] = nullptr;
            }
        }
        EXPECT_EQ(ZVInputEvent::fromJSON(json.dump()).payload(), form.event.payload()) << json;
    }
}

TEST(ZVInputEvent, SaysWhichKeyIsMissingOrWrong) {
    for (const Form& form : forms()) {
        const auto whole = nlohmann::json::parse(withTime(form.json));
        for (const auto& [key, value] : whole.items()) {
            const bool mayBeAbsent = key == "button" || key == "characters";
            auto missing = whole;
            missing.erase(key);
            EXPECT_EQ(problem(missing.dump()),
                      mayBeAbsent ? "nothing thrown" : "document: missing key \"" + key + "\"");
            auto wrong = whole;
            wrong[key] = value.is_object() ? nlohmann::json("x") : nlohmann::json::object();
            EXPECT_TRUE(problem(wrong.dump()).starts_with(key + ": not a")) << problem(wrong.dump());
        }
    }
    const auto wrong = [](const char* key, const nlohmann::json& value) {
        auto json = nlohmann::json::parse(withTime(forms()[2].json));
        json[key] = value;
        return problem(json.dump());
    };
    EXPECT_EQ(wrong("modifiers", {"shift", "Shift"}), "modifiers[1]: unknown value \"Shift\"");
    EXPECT_EQ(wrong("keyType", "delete_"), "keyType: unknown value \"delete_\"");
    EXPECT_EQ(wrong("time", {{"seconds", 0}, {"value", 1e30}, {"timescale", 1}}), "time.value: not a whole number");
}

TEST(ZVInputEvent, RefusesNumbersThatAreNotFiniteBothWays) {
    EXPECT_ANY_THROW(ZVInputEvent(ZVMouseEvent{.x = std::numeric_limits<double>::infinity()}).toJSON());
    auto json = nlohmann::json::parse(withTime(forms()[0].json));
    json["x"] = "+infinity";
    EXPECT_EQ(problem(json.dump()), "x: not a number");
    EXPECT_EQ(problem(R"({"modifiers":[],"time":{"seconds":"NaN","timescale":1,"value":0},"type":"modifiersChanged"})"),
              "time.seconds: not a number");
}

TEST(ZVInputEvent, AnUnknownTypeIsAnErrorOfItsOwn) {
    try {
        ZVInputEvent::fromJSON(R"({"type":"touch"})");
        FAIL() << "read an event of an unknown type";
    } catch (const UnknownDiscriminator& error) {
        EXPECT_EQ(error.field(), "type");
        EXPECT_EQ(error.value(), "touch");
        EXPECT_EQ(error.debugDescription(), "Unknown .type 'touch' decoded at path: .type");
        EXPECT_EQ(localizedDescription(error.underlyingError()), "type: unknown value \"touch\"");
    }
    EXPECT_EQ(UnknownDiscriminator(nullptr, "kind", "x").debugDescription(), "Unknown .kind 'x' decoded");
    EXPECT_EQ(problem(R"({"type":5})"), "type: not a string");
    EXPECT_EQ(problem(R"({"type":null})"), "type: not a string");
    EXPECT_EQ(problem("{}"), "document: missing key \"type\"");
    EXPECT_EQ(problem("[]"), "document: not an object");
}

TEST(ZVInputEvent, NamesEveryKeyOnce) {
    std::set<std::string_view> names;
    std::set<std::string_view> symbols;
    for (int index = 0; index <= static_cast<int>(ZVKeyboardKeyType::f19); ++index) {
        const auto keyType = static_cast<ZVKeyboardKeyType>(index);
        names.insert(rawValue(keyType));
        symbols.insert(symbol(keyType));
    }
    EXPECT_EQ(names.size(), 35U);
    EXPECT_EQ(symbols.size(), 35U);
    EXPECT_EQ(rawValue(ZVKeyboardKeyType::return_), "return");
    EXPECT_EQ(title(ZVKeyboardKeyType::deleteForward), "forward delete");
    EXPECT_EQ(symbol(ZVKeyboardKeyType::clear), "\u2327");
    EXPECT_EQ(rawValue(ZVKeyboardKeyType::f19), "f19");
    EXPECT_EQ(title(ZVKeyboardKeyType::f19), "F19");
    EXPECT_EQ(rawValue(ZVCursorType::contextualMenu), "contextualMenu");
}

}  // namespace
}  // namespace zorvane
