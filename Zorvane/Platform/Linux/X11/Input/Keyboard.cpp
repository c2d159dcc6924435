#include "Zorvane/Platform/Linux/X11/Input/Keyboard.hpp"

#include <utility>

#include "Zorvane/Platform/Linux/X11/Input/KeyCodes.hpp"

namespace zorvane {
namespace {

bool isPress(const DeviceEvent& event) {
    return event.kind == DeviceEvent::Kind::keyPress;
}

std::optional<std::string> presentIfAny(std::string text) {
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

}  // namespace

Keyboard::Keyboard(std::unique_ptr<KeyboardLayout> layout, KeyComposer composer, const std::vector<std::uint8_t>& held)
    : layout_(std::move(layout)), composer_(std::move(composer)) {
    for (const std::uint8_t key : held) {
        if (const auto effect = layout_ ? layout_->modifierEffect(key, 0) : std::nullopt) {
            modifiers_.assumeHeld(key, *effect);
        }
    }
}

void Keyboard::replaceLayout(std::unique_ptr<KeyboardLayout> layout, std::uint32_t since) {
    next_ = NextLayout{std::move(layout), next_ ? next_->since : since};
}

void Keyboard::followLayout(std::uint32_t time) {
    if (next_ && static_cast<std::int32_t>(time - next_->since) >= 0) {
        layout_ = std::move(next_->layout);
        next_.reset();
    }
}

CGEventFlags Keyboard::flags(const DeviceEvent& event) {
    followLayout(event.time);
    return modifierMap().flags(event.state);
}

std::optional<CGEvent> Keyboard::take(const DeviceEvent& event) {
    followLayout(event.time);
    const bool isHeldModifier = !isPress(event) && modifiers_.holds(event.detail);
    const auto effect = layout_ ? layout_->modifierEffect(event.detail, event.state) : std::nullopt;
    // What was pressed as a modifier is let go as one, whatever the key stands for by then.
    return effect || isHeldModifier ? takeModifier(event, effect.value_or(ModifierEffect())) : takeKey(event);
}

std::optional<CGEvent> Keyboard::takeModifier(const DeviceEvent& event, const ModifierEffect& effect) {
    const std::uint16_t after = isPress(event) ? modifiers_.press(event.detail, effect, event.state)
                                               : modifiers_.release(event.detail, event.state);
    const ModifierMap map = modifierMap();
    if (map.flags(after) == map.flags(event.state)) {
        return std::nullopt;
    }
    CGEvent changed;
    changed.type = CGEventType::flagsChanged;
    changed.flags = map.flags(after);
    changed.nsEvent.emplace();
    return changed;
}

CGEvent Keyboard::takeKey(const DeviceEvent& event) {
    const std::uint32_t keysym = layout_ ? layout_->keysym(event.detail, event.state) : 0;
    CGEvent key;
    key.type = isPress(event) ? CGEventType::keyDown : CGEventType::keyUp;
    key.flags = modifierMap().flags(event.state);
    key.keyboardEventKeycode = keyCode(event);
    key.keyboardEventAutorepeat = event.isRepeat ? 1 : 0;
    key.nsEvent = layout_ ? textOf(event, keysym) : NSEvent();
    return key;
}

/// With Control and Alt, F1 to F12 are the server's own switches of consoles; they are the same keys for all that.
std::int64_t Keyboard::keyCode(const DeviceEvent& event) {
    const auto state = static_cast<std::uint16_t>(event.state & ~XModifiers::control);
    return keyCodeOf(layout_ ? layout_->keysym(event.detail, state) : 0, event.detail);
}

/// Only presses are put together. A key without text that takes part in that, such as Compose, types nothing.
NSEvent Keyboard::textOf(const DeviceEvent& event, std::uint32_t keysym) {
    NSEvent text;
    text.charactersIgnoringModifiers = presentIfAny(layout_->plainText(event.detail, event.state));
    auto composed = isPress(event) ? composer_.take(keysym) : std::nullopt;
    if (!composed && !signOfDeadKey(keysym).empty()) {
        composed = "";
    }
    const bool isWaiting = composed && composed->empty();
    if (!isWaiting) {
        text.characters = composed ? composed : presentIfAny(layout_->text(event.detail, event.state));
    } else if (text.charactersIgnoringModifiers) {
        text.characters = "";
    }
    return text;
}

}  // namespace zorvane
