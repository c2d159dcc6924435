// The desktop's cursor theme.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "Zorvane/Platform/AppKit/NSCursor.hpp"
#include "Zorvane/Platform/CryptoKit/InsecureSHA1.hpp"

namespace zorvane {

class XConnection;

/// Which theme programs show, and how big.
struct CursorThemeChoice {
    std::string theme;  ///< empty for the default one
    int size = 0;       ///< pixels, as themes count

    bool operator==(const CursorThemeChoice&) const = default;

    /// What the cursor library chooses: the environment's XCURSOR_THEME and XCURSOR_SIZE, else the server's resources
    /// Xcursor.theme, Xcursor.size and Xft.dpi, else the default theme and a 48th of the screen. One round trip.
    static CursorThemeChoice read(const XConnection& connection);
};

/// A resource's value in a server's resource database; nothing if it isn't there. Only names without wildcards are
/// looked for. Pure.
std::optional<std::string_view> findResource(std::string_view database, std::string_view name);

/// The cursors that a theme has for the library's types, read from files when made. Of types with the same image the
/// first one in `allCursorNames` has it; the theme lacks the others. Immutable.
class CursorTheme {
  public:
    explicit CursorTheme(CursorThemeChoice choice);

    const CursorThemeChoice& choice() const { return choice_; }

    /// In the chosen size, the first picture of one that moves.
    std::optional<NSCursor> cursor(ZVCursorType type) const;

    /// The type of a cursor that looks like one of the theme's in any usual size, any picture of one that moves.
    std::optional<ZVCursorType> typeOf(const NSCursor& cursor) const;

  private:
    /// Hot spot and image, whose bytes tell its size.
    using Look = std::tuple<double, double, SHA1Digest>;

    static Look lookOf(const NSCursor& cursor);
    void load(ZVCursorType type, const char* name);
    void loadSize(ZVCursorType type, const char* name, int size);

    const CursorThemeChoice choice_;
    std::map<ZVCursorType, NSCursor> cursors_;
    std::map<Look, ZVCursorType> looks_;
};

}  // namespace zorvane
