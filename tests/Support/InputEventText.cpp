#include "tests/Support/InputEventText.hpp"

#include <fmt/format.h>

#include <variant>

namespace zorvane::testing {
namespace {

struct Describe {
    std::string operator()(const ZVMouseEvent& mouse) const {
        const std::string button = mouse.button ? fmt::format(" {}", rawValue(*mouse.button)) : "";
        return fmt::format("{}{} {} {},{}", rawValue(mouse.mouseEventType), button, rawValue(mouse.cursorType), mouse.x,
                           mouse.y);
    }
    std::string operator()(const ZVKeyboardEvent& key) const {
        const std::string text = key.characters ? fmt::format(" \"{}\"", *key.characters) : "";
        return fmt::format("{} {}{}{}", rawValue(key.keyboardEventType), key.keyTitle, text,
                           key.isARepeat ? " repeat" : "");
    }
    std::string operator()(const ZVInputModifiersChangedEvent&) const { return "modifiers"; }
};

}  // namespace

std::string textOf(const ZVInputEvent& event) {
    std::string text = fmt::format("{:.3f} {}", event.time().seconds(), std::visit(Describe(), event.payload()));
    for (const ZVInputModifier modifier : event.modifiers()) {
        text += fmt::format(" {}", rawValue(modifier));
    }
    return text;
}

std::vector<std::string> textOfFile(const std::filesystem::path& sideFile) {
    std::vector<std::string> lines;
    for (const ZVInputEvent& event : ZVInputEvent::read(sideFile)) {
        lines.push_back(textOf(event));
    }
    return lines;
}

}  // namespace zorvane::testing
