// What the user did with mouse and keyboard during a recording: the elements of the side file "input-events.json".
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Zorvane/ZVTime.hpp"

namespace zorvane {

// Each of these enumerations stands in JSON as the name of its case.

/// A modifier key that is held, or caps lock that is on. `option` is Alt, `command` is the Super (Windows) key.
enum class ZVInputModifier : std::uint8_t { capsLock, shift, control, option, command, function };
enum class ZVMouseEventType : std::uint8_t { down, up, moved, dragged, cursorChanged };
enum class ZVMouseButton : std::uint8_t { primary, secondary, center, other };
enum class ZVKeyboardEventType : std::uint8_t { down, up };

/// Which of the desktop's cursors was on the screen; `custom` is one of a program's own.
enum class ZVCursorType : std::uint8_t {
    custom,
    arrow,
    iBeam,
    crosshair,
    closedHand,
    openHand,
    pointingHand,
    resizeLeft,
    resizeRight,
    resizeLeftRight,
    resizeUp,
    resizeDown,
    resizeUpDown,
    disappearingItem,
    iBeamCursorForVerticalLayout,
    operationNotAllowed,
    dragLink,
    dragCopy,
    contextualMenu,
};

/// The kind of a key; `character` is any that has no name of its own here.
enum class ZVKeyboardKeyType : std::uint8_t {
    character,
    escape,
    delete_,  ///< the one that deletes backward; "delete" in JSON
    tab,
    return_,  ///< "return" in JSON
    space,
    leftArrow,
    rightArrow,
    downArrow,
    upArrow,
    deleteForward,
    home,
    end,
    pageUp,
    pageDown,
    clear,
    f1,
    f2,
    f3,
    f4,
    f5,
    f6,
    f7,
    f8,
    f9,
    f10,
    f11,
    f12,
    f13,
    f14,
    f15,
    f16,
    f17,
    f18,
    f19,
};

/// The name of a case, as it stands in JSON.
std::string_view rawValue(ZVInputModifier modifier);
std::string_view rawValue(ZVMouseEventType type);
std::string_view rawValue(ZVMouseButton button);
std::string_view rawValue(ZVKeyboardEventType type);
std::string_view rawValue(ZVCursorType type);
std::string_view rawValue(ZVKeyboardKeyType type);

/// What to show for a key, such as "return" and its sign "⏎"; "□" for a key of text.
std::string_view title(ZVKeyboardKeyType keyType);
std::string_view symbol(ZVKeyboardKeyType keyType);

using ZVInputModifiers = std::set<ZVInputModifier>;

/// A button or the pointer's move, drag or scroll.
struct ZVMouseEvent {
    ZVMouseEventType mouseEventType = ZVMouseEventType::moved;
    ZVTime time;                 ///< since the recording's start
    ZVInputModifiers modifiers;  ///< held at that time
    /// The pointer's place as a fraction of the recorded area: (0, 0) is its top left, (1, 1) its bottom right corner;
    /// beyond that it is outside.
    double x = 0;
    double y = 0;
    std::optional<ZVMouseButton> button;  ///< absent for movement without a button and for changes of the cursor
    ZVCursorType cursorType = ZVCursorType::custom;  ///< the one on the screen at that time

    bool operator==(const ZVMouseEvent&) const = default;
};

/// A key, pressed or released.
struct ZVKeyboardEvent {
    ZVKeyboardEventType keyboardEventType = ZVKeyboardEventType::down;
    ZVTime time;  ///< since the recording's start
    ZVInputModifiers modifiers;
    ZVKeyboardKeyType keyType = ZVKeyboardKeyType::character;
    std::string keyTitle;                   ///< what to show for the key: "return", "A"
    std::string keySymbol;                  ///< the same as a sign: "⏎", "A"
    std::optional<std::string> characters;  ///< what it typed; absent for all key types but `character`
    bool isARepeat = false;                 ///< holding the key down made it

    bool operator==(const ZVKeyboardEvent&) const = default;
};

/// A modifier key went down or up.
struct ZVInputModifiersChangedEvent {
    ZVTime time;                 ///< since the recording's start
    ZVInputModifiers modifiers;  ///< all that are held from then on

    bool operator==(const ZVInputModifiersChangedEvent&) const = default;
};

/// One of the above.
class ZVInputEvent {
  public:
    using Payload = std::variant<ZVMouseEvent, ZVKeyboardEvent, ZVInputModifiersChangedEvent>;

    /// What "type" says in JSON, in the order of the payloads.
    enum class TypeValue : std::uint8_t { mouse, keyboard, modifiersChanged };

    explicit ZVInputEvent(ZVMouseEvent event) : payload_(std::move(event)) {}
    explicit ZVInputEvent(ZVKeyboardEvent event) : payload_(std::move(event)) {}
    explicit ZVInputEvent(ZVInputModifiersChangedEvent event) : payload_(std::move(event)) {}

    const Payload& payload() const { return payload_; }
    TypeValue type() const { return static_cast<TypeValue>(payload_.index()); }
    const ZVTime& time() const;
    const ZVInputModifiers& modifiers() const;

    /// One JSON object: the payload's fields under their names and "type", sorted, on one line; a field without a value
    /// is left out. Throws a `std::exception` for a place or a time that isn't finite.
    std::string toJSON() const;
    /// Reads that object; unknown keys are ignored. Throws an `UnknownDiscriminator` for a "type" that isn't listed,
    /// and for all else a `std::exception` that names the path of what is wrong.
    static ZVInputEvent fromJSON(std::string_view json);
    /// Reads a whole side file, or one that is cut off because its recording was killed: all its whole lines. Throws as
    /// above, with the element's number in the path, and when the file can't be read.
    static std::vector<ZVInputEvent> read(const std::filesystem::path& sideFile);
    /// The same one by one, for a long recording: only one event is in memory. Throws also what `body` throws.
    static void forEach(const std::filesystem::path& sideFile, const std::function<void(ZVInputEvent)>& body);

  private:
    Payload payload_;
};

}  // namespace zorvane
