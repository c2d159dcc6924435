#include "Zorvane/Platform/Linux/X11/Cursor/FontCursors.hpp"

#include <xcb/xcb.h>

#include <array>
#include <string_view>
#include <vector>

#include "Zorvane/Platform/Linux/X11/Cursor/CursorNames.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

/// A glyph has the cursor's foreground, the one behind it has all that isn't transparent.
struct Glyph {
    std::uint8_t number;
    std::string_view name;
};

constexpr std::array glyphs{
    Glyph{2, "arrow"},
    Glyph{16, "bottom_side"},
    Glyph{30, "cross"},
    Glyph{32, "cross_reverse"},
    Glyph{34, "crosshair"},
    Glyph{60, "hand2"},
    Glyph{68, "left_ptr"},
    Glyph{70, "left_side"},
    Glyph{96, "right_side"},
    Glyph{108, "sb_h_double_arrow"},
    Glyph{116, "sb_v_double_arrow"},
    Glyph{130, "tcross"},
    Glyph{132, "top_left_arrow"},
    Glyph{138, "top_side"},
    Glyph{152, "xterm"},
};

/// The glyphs of a font, drawn into pictures of one bit for each pixel.
class GlyphPainter {
  public:
    explicit GlyphPainter(const XConnection& connection)
        : connection_(connection.get()), root_(connection.root()), font_(xcb_generate_id(connection_)) {
        constexpr std::string_view name = "cursor";
        xcb_open_font(connection_, font_, name.size(), name.data());
        const auto query = xcb_query_font(connection_, font_);
        metrics_.reset(xcb_query_font_reply(connection_, query, nullptr));
    }
    GlyphPainter(const GlyphPainter&) = delete;
    GlyphPainter& operator=(const GlyphPainter&) = delete;
    ~GlyphPainter() {
        if (metrics_) {
            xcb_close_font(connection_, font_);
        }
    }

    /// Null for a glyph that the font lacks.
    const xcb_charinfo_t* metrics(std::uint8_t glyph) const {
        if (!metrics_ || glyph < metrics_->min_char_or_byte2) {
            return nullptr;
        }
        const int index = glyph - metrics_->min_char_or_byte2;
        return index < xcb_query_font_char_infos_length(metrics_.get())
                   ? xcb_query_font_char_infos(metrics_.get()) + index
                   : nullptr;
    }

    /// Which pixels of the glyph are set, with its origin where that of an area is.
    std::vector<bool> paint(std::uint8_t glyph, const xcb_charinfo_t& area) const;

  private:
    xcb_connection_t* connection_;
    xcb_window_t root_;
    xcb_font_t font_;
    XReply<xcb_query_font_reply_t> metrics_;  // null if there is no such font
};

std::uint16_t widthOf(const xcb_charinfo_t& area) {
    return static_cast<std::uint16_t>(area.right_side_bearing - area.left_side_bearing);
}

std::uint16_t heightOf(const xcb_charinfo_t& area) {
    return static_cast<std::uint16_t>(area.ascent + area.descent);
}

/// Rows begin at multiples of some bytes.
std::vector<bool> bitsIn(const xcb_get_image_reply_t& image, const xcb_setup_t& setup, const xcb_charinfo_t& area) {
    const std::uint8_t* bytes = xcb_get_image_data(&image);
    const std::size_t rowBytes = static_cast<std::size_t>(xcb_get_image_data_length(&image)) / heightOf(area);
    const bool isLowestFirst = setup.bitmap_format_bit_order == XCB_IMAGE_ORDER_LSB_FIRST;
    std::vector<bool> bits;
    for (std::size_t y = 0; y < heightOf(area); ++y) {
        for (std::size_t x = 0; x < widthOf(area) && x / 8 < rowBytes; ++x) {
            const auto bit = isLowestFirst ? x % 8 : 7 - x % 8;
            bits.push_back((bytes[y * rowBytes + x / 8] >> bit & 1) != 0);
        }
    }
    return bits;
}

std::vector<bool> GlyphPainter::paint(std::uint8_t glyph, const xcb_charinfo_t& area) const {
    const xcb_pixmap_t picture = xcb_generate_id(connection_);
    const xcb_gcontext_t context = xcb_generate_id(connection_);
    const std::array<std::uint32_t, 2> clearing{0, font_};  // foreground, font
    const std::uint32_t set = 1;
    const xcb_rectangle_t whole{.x = 0, .y = 0, .width = widthOf(area), .height = heightOf(area)};
    const std::array<std::uint8_t, 3> text{1, 0, glyph};  // one sign, not shifted
    xcb_create_pixmap(connection_, 1, picture, root_, whole.width, whole.height);
    xcb_create_gc(connection_, context, picture, XCB_GC_FOREGROUND | XCB_GC_FONT, clearing.data());
    xcb_poly_fill_rectangle(connection_, picture, context, 1, &whole);
    xcb_change_gc(connection_, context, XCB_GC_FOREGROUND, &set);
    xcb_poly_text_8(connection_, picture, context, static_cast<std::int16_t>(-area.left_side_bearing), area.ascent,
                    text.size(), text.data());
    const auto query =
        xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, picture, 0, 0, whole.width, whole.height, 1);
    xcb_free_gc(connection_, context);
    xcb_free_pixmap(connection_, picture);
    const XReply<xcb_get_image_reply_t> image(xcb_get_image_reply(connection_, query, nullptr));
    return image ? bitsIn(*image, *xcb_get_setup(connection_), area) : std::vector<bool>();
}

/// The glyph as a cursor of two colours.
std::vector<std::uint32_t> pixelsOf(const std::vector<bool>& source, const std::vector<bool>& mask) {
    constexpr std::uint32_t foreground = 0xFF000000;
    constexpr std::uint32_t background = 0xFFFFFFFF;
    std::vector<std::uint32_t> pixels;
    for (std::size_t index = 0; index < mask.size() && index < source.size(); ++index) {
        const std::uint32_t color = source[index] ? foreground : background;
        pixels.push_back(mask[index] ? color : 0);
    }
    return pixels;
}

}  // namespace

FontCursors::FontCursors(const XConnection& connection) {
    const GlyphPainter painter(connection);
    for (const Glyph& each : glyphs) {
        const auto maskNumber = static_cast<std::uint8_t>(each.number + 1);
        const auto type = cursorTypeNamed(each.name);
        const xcb_charinfo_t* area = painter.metrics(maskNumber);
        if (!type || !area || widthOf(*area) == 0 || heightOf(*area) == 0) {
            continue;
        }
        const auto pixels = pixelsOf(painter.paint(each.number, *area), painter.paint(maskNumber, *area));
        shapes_.emplace(shapeOf({.pixels = pixels,
                                 .width = widthOf(*area),
                                 .height = heightOf(*area),
                                 .hotX = static_cast<std::uint32_t>(-area->left_side_bearing),
                                 .hotY = static_cast<std::uint32_t>(area->ascent)}),
                        *type);
    }
}

std::optional<ZVCursorType> FontCursors::typeOf(const CursorPixels& cursor) const {
    const auto found = shapes_.find(shapeOf(cursor));
    return found != shapes_.end() ? std::optional(found->second) : std::nullopt;
}

/// Transparent pixels are blank; colours are letters, by the order in which they come up. A third one is no glyph's.
FontCursors::Shape FontCursors::shapeOf(const CursorPixels& cursor) {
    std::string pattern;
    std::optional<std::uint32_t> first;
    std::optional<std::uint32_t> second;
    for (const std::uint32_t pixel : cursor.pixels) {
        if (pixel == 0) {
            pattern += ' ';
        } else if (pixel == first.value_or(pixel)) {
            first = pixel;
            pattern += 'a';
        } else if (pixel == second.value_or(pixel)) {
            second = pixel;
            pattern += 'b';
        } else {
            return {};
        }
    }
    return {cursor.hotX, cursor.hotY, cursor.width, pattern};
}

}  // namespace zorvane
