#include "Zorvane/Platform/Linux/X11/Cursor/CursorNames.hpp"

#include <algorithm>
#include <array>

namespace zorvane {
namespace {

using Type = ZVCursorType;

constexpr std::array arrow{"default", "left_ptr", "arrow", "top_left_arrow"};
constexpr std::array iBeam{"text", "xterm", "ibeam"};
constexpr std::array pointingHand{"pointer", "hand2", "pointing_hand", "hand"};
constexpr std::array crosshair{"crosshair", "cross", "tcross", "cross_reverse"};
constexpr std::array resizeLeftRight{"ew-resize", "sb_h_double_arrow", "h_double_arrow",
                                     "size_hor",  "col-resize",        "split_h"};
constexpr std::array resizeUpDown{"ns-resize", "sb_v_double_arrow", "v_double_arrow",
                                  "size_ver",  "row-resize",        "split_v"};
constexpr std::array operationNotAllowed{"not-allowed", "crossed_circle", "forbidden",
                                         "no-drop",     "dnd-no-drop",    "dnd-none"};
constexpr std::array openHand{"grab", "openhand", "hand1"};
constexpr std::array closedHand{"grabbing", "closedhand"};
constexpr std::array dragCopy{"copy", "dnd-copy"};
constexpr std::array dragLink{"alias", "dnd-link", "link"};
constexpr std::array contextualMenu{"context-menu"};
constexpr std::array verticalText{"vertical-text"};
constexpr std::array resizeLeft{"w-resize", "left_side"};
constexpr std::array resizeRight{"e-resize", "right_side"};
constexpr std::array resizeUp{"n-resize", "top_side"};
constexpr std::array resizeDown{"s-resize", "bottom_side"};

constexpr std::array all{
    CursorNames{Type::arrow, arrow},
    CursorNames{Type::iBeam, iBeam},
    CursorNames{Type::pointingHand, pointingHand},
    CursorNames{Type::crosshair, crosshair},
    CursorNames{Type::resizeLeftRight, resizeLeftRight},
    CursorNames{Type::resizeUpDown, resizeUpDown},
    CursorNames{Type::operationNotAllowed, operationNotAllowed},
    CursorNames{Type::openHand, openHand},
    CursorNames{Type::closedHand, closedHand},
    CursorNames{Type::dragCopy, dragCopy},
    CursorNames{Type::dragLink, dragLink},
    CursorNames{Type::contextualMenu, contextualMenu},
    CursorNames{Type::iBeamCursorForVerticalLayout, verticalText},
    CursorNames{Type::resizeLeft, resizeLeft},
    CursorNames{Type::resizeRight, resizeRight},
    CursorNames{Type::resizeUp, resizeUp},
    CursorNames{Type::resizeDown, resizeDown},
};

}  // namespace

std::span<const CursorNames> allCursorNames() {
    return all;
}

std::optional<ZVCursorType> cursorTypeNamed(std::string_view name) {
    const auto found = std::ranges::find_if(
        all, [name](const CursorNames& each) { return std::ranges::find(each.names, name) != each.names.end(); });
    return found != all.end() ? std::optional(found->type) : std::nullopt;
}

}  // namespace zorvane
