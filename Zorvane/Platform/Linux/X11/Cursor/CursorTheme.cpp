#include "Zorvane/Platform/Linux/X11/Cursor/CursorTheme.hpp"

#include <X11/Xcursor/Xcursor.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <span>

#include "Zorvane/Platform/Linux/X11/Cursor/CursorNames.hpp"
#include "Zorvane/Platform/Linux/X11/Cursor/PixelCursor.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XProperty.hpp"

namespace zorvane {
namespace {

constexpr std::array usualSizes{16, 24, 32, 48, 64, 96};

struct DestroyImages {
    void operator()(XcursorImages* images) const noexcept { XcursorImagesDestroy(images); }
};

/// A cursor's pictures in the size that is closest, from the theme or one that it builds on.
std::unique_ptr<XcursorImages, DestroyImages> loadImages(const char* name, const CursorThemeChoice& choice, int size) {
    return std::unique_ptr<XcursorImages, DestroyImages>(
        XcursorLibraryLoadImages(name, choice.theme.empty() ? nullptr : choice.theme.c_str(), size));
}

NSCursor cursorOf(const XcursorImage& image) {
    return makeCursor({.pixels = {image.pixels, static_cast<std::size_t>(image.width) * image.height},
                       .width = image.width,
                       .height = image.height,
                       .hotX = image.xhot,
                       .hotY = image.yhot});
}

/// 0 for what is no number that makes sense.
int numberIn(std::string_view text) {
    constexpr int largest = 0x7FFF;
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number > largest ? 0 : std::max(number, 0);
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const auto begin = text.find_first_not_of(blanks);
    return begin == std::string_view::npos ? "" : text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

/// An environment variable, else a resource.
std::string_view setting(const char* variable, std::string_view database, std::string_view resource) {
    const char* value = std::getenv(variable);
    return value ? value : findResource(database, resource).value_or("");
}

int sizeFor(const XConnection& connection, std::string_view database) {
    constexpr int pointsPerCursor = 16;
    constexpr int pointsPerInch = 72;
    constexpr int cursorsPerScreen = 48;
    if (const int size = numberIn(setting("XCURSOR_SIZE", database, "Xcursor.size")); size > 0) {
        return size;
    }
    if (const int dotsPerInch = numberIn(findResource(database, "Xft.dpi").value_or("")); dotsPerInch > 0) {
        return dotsPerInch * pointsPerCursor / pointsPerInch;
    }
    const xcb_screen_t& screen = connection.screen();
    return std::min(screen.width_in_pixels, screen.height_in_pixels) / cursorsPerScreen;
}

}  // namespace

std::optional<std::string_view> findResource(std::string_view database, std::string_view name) {
    while (!database.empty()) {
        const auto lineEnd = std::min(database.find('\n'), database.size());
        const std::string_view line = database.substr(0, lineEnd);
        database.remove_prefix(std::min(lineEnd + 1, database.size()));
        const auto colon = line.find(':');
        if (colon != std::string_view::npos && trimmed(line.substr(0, colon)) == name) {
            return trimmed(line.substr(colon + 1));
        }
    }
    return std::nullopt;
}

CursorThemeChoice CursorThemeChoice::read(const XConnection& connection) {
    constexpr std::uint32_t longestDatabase = 64 * 1024;  // bytes
    const XProperty property =
        XPropertyQuery(connection, connection.root(), XCB_ATOM_RESOURCE_MANAGER, longestDatabase).answer();
    const std::string_view database = property.bytes();
    return {std::string(setting("XCURSOR_THEME", database, "Xcursor.theme")), sizeFor(connection, database)};
}

CursorTheme::CursorTheme(CursorThemeChoice choice) : choice_(std::move(choice)) {
    for (const CursorNames& each : allCursorNames()) {
        for (const char* name : each.names) {
            load(each.type, name);
        }
    }
}

/// A name whose picture is known by now is another one's alias.
void CursorTheme::load(ZVCursorType type, const char* name) {
    const auto images = loadImages(name, choice_, choice_.size);
    if (!images || images->nimage == 0) {
        return;
    }
    const NSCursor shown = cursorOf(*images->images[0]);
    if (!looks_.emplace(lookOf(shown), type).second) {
        return;
    }
    cursors_.emplace(type, shown);
    loadSize(type, name, choice_.size);
    for (const int size : usualSizes) {
        loadSize(type, name, size);
    }
}

void CursorTheme::loadSize(ZVCursorType type, const char* name, int size) {
    const auto images = loadImages(name, choice_, size);
    if (!images) {
        return;
    }
    for (const XcursorImage* image : std::span(images->images, static_cast<std::size_t>(images->nimage))) {
        looks_.emplace(lookOf(cursorOf(*image)), type);
    }
}

CursorTheme::Look CursorTheme::lookOf(const NSCursor& cursor) {
    return {cursor.hotSpot.x, cursor.hotSpot.y, insecureSHA1(*cursor.tiffRepresentation)};
}

std::optional<NSCursor> CursorTheme::cursor(ZVCursorType type) const {
    const auto found = cursors_.find(type);
    return found != cursors_.end() ? std::optional(found->second) : std::nullopt;
}

std::optional<ZVCursorType> CursorTheme::typeOf(const NSCursor& cursor) const {
    const auto found = looks_.find(lookOf(cursor));
    return found != looks_.end() ? std::optional(found->second) : std::nullopt;
}

}  // namespace zorvane
