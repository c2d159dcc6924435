#include "Zorvane/Platform/Linux/X11/ScreenReader.hpp"

#include <fmt/format.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/X11/ShmSegment.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"

namespace zorvane {
namespace {

constexpr std::uint32_t allPlanes = ~0U;
constexpr std::size_t bytesPerPixel = 4;

const xcb_visualtype_t* rootVisual(const xcb_screen_t& screen) {
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem > 0; xcb_depth_next(&depth)) {
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0; xcb_visualtype_next(&visual)) {
            if (visual.data->visual_id == screen.root_visual) {
                return visual.data;
            }
        }
    }
    return nullptr;
}

std::uint8_t bitsPerPixel(const xcb_setup_t* setup, std::uint8_t depth) {
    for (auto format = xcb_setup_pixmap_formats_iterator(setup); format.rem > 0; xcb_format_next(&format)) {
        if (format.data->depth == depth) {
            return format.data->bits_per_pixel;
        }
    }
    return 0;
}

std::optional<CVPixelFormat> pixelFormat(const XConnection& connection) {
    const xcb_setup_t* setup = xcb_get_setup(connection.get());
    const xcb_visualtype_t* visual = rootVisual(connection.screen());
    if (!visual || setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST ||
        bitsPerPixel(setup, connection.screen().root_depth) != 8 * bytesPerPixel) {
        return std::nullopt;
    }
    const auto hasMasks = [visual](std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
        return visual->red_mask == red && visual->green_mask == green && visual->blue_mask == blue;
    };
    if (hasMasks(0xFF0000, 0xFF00, 0xFF)) {
        return CVPixelFormat::bgra;
    }
    return hasMasks(0x3FF00000, 0xFFC00, 0x3FF) ? std::optional(CVPixelFormat::l10r) : std::nullopt;
}

CVPixelLayout makeLayout(const XConnection& connection, const ScreenArea& area) {
    const auto format = pixelFormat(connection);
    if (!format) {
        throw NSError(SCStreamErrorDomain, static_cast<std::int64_t>(SCStreamErrorCode::failedToStart),
                      {fmt::format("The X server \"{}\" has a screen of depth {}, which can't be recorded. Set it to "
                                   "depth 24 or 30.",
                                   connection.name(), connection.screen().root_depth)});
    }
    return {.width = area.width,
            .height = area.height,
            .bytesPerRow = static_cast<std::size_t>(area.width) * bytesPerPixel,
            .format = *format,
            .colorSpace = CGColorSpaceName::sRGB};
}

/// The server writes whole rows one behind the other, so they must be as long as the picture's.
bool hasWholeRows(const ScreenArea& area) {
    return area.visible.x == 0 && area.visible.width == area.width;
}

/// Each picture begins on a cache line.
std::size_t slotSize(const CVPixelLayout& layout) {
    constexpr std::size_t alignment = 64;
    return (layout.byteSize() + alignment - 1) / alignment * alignment;
}

/// Zeroed, like shared memory: what no pixel of the display comes to stays black.
std::shared_ptr<std::byte> makeOwnMemory(std::size_t size) {
    std::shared_ptr<std::byte> memory(static_cast<std::byte*>(std::calloc(size, 1)), XFree());
    if (!memory) {
        throw std::bad_alloc();
    }
    return memory;
}

std::shared_ptr<CVPixelBufferPool> makePool(const CVPixelLayout& layout, std::size_t pictures,
                                            const std::shared_ptr<ShmSegment>& shared) {
    const auto own = shared ? nullptr : makeOwnMemory(slotSize(layout) * pictures);
    std::byte* memory = shared ? shared->bytes() : own.get();
    std::vector<std::byte*> slots;
    for (std::size_t slot = 0; slot < pictures; ++slot) {
        slots.push_back(memory + slot * slotSize(layout));
    }
    return CVPixelBufferPool::make(layout, slots, shared ? std::shared_ptr<void>(shared) : own);
}

}  // namespace

ScreenReader::ScreenReader(XConnection& connection, const ScreenArea& area, ScreenSource::Place place,
                           std::size_t pictures)
    : connection_(connection),
      area_(area),
      place_(place),
      layout_(makeLayout(connection, area)),
      shared_(hasWholeRows(area) ? ShmSegment::make(connection, slotSize(layout_) * pictures) : nullptr),
      pool_(makePool(layout_, pictures, shared_)),
      stale_(pictures, RowSpan{0, area.height}) {}

ScreenReader::~ScreenReader() = default;

void ScreenReader::noteChanged(const RowSpan& rows) {
    for (RowSpan& stale : stale_) {
        stale = stale.joinedWith(rows);
    }
}

void ScreenReader::noteDrawnOver(const CVPixelBuffer& picture, const RowSpan& rows) {
    stale_[picture.slot()] = stale_[picture.slot()].joinedWith(rows);
}

RowSpan ScreenReader::rowsToRead(const CVPixelBuffer& picture) const {
    const RowSpan& stale = stale_[picture.slot()];
    return {std::max(stale.top, area_.visible.y), std::min(stale.bottom, area_.visible.maxY())};
}

void ScreenReader::request(const CVPixelBuffer& picture) {
    const RowSpan rows = rowsToRead(picture);
    if (rows.isEmpty()) {
        return;
    }
    if (shared_) {
        requestIntoMemory(picture, rows);
    } else {
        requestThroughConnection(rows);
    }
}

bool ScreenReader::receive(CVPixelBuffer& picture) {
    const RowSpan rows = rowsToRead(picture);
    stale_[picture.slot()] = {};
    if (rows.isEmpty()) {
        return true;
    }
    return shared_ ? receiveIntoMemory() : receiveThroughConnection(picture, rows);
}

void ScreenReader::requestIntoMemory(const CVPixelBuffer& picture, const RowSpan& rows) {
    const std::size_t offset =
        picture.slot() * slotSize(layout_) + static_cast<std::size_t>(rows.top) * layout_.bytesPerRow;
    request_ =
        xcb_shm_get_image(connection_.get(), place_.drawable, static_cast<std::int16_t>(place_.x),
                          static_cast<std::int16_t>(place_.y + rows.top), static_cast<std::uint16_t>(area_.width),
                          static_cast<std::uint16_t>(rows.count()), allPlanes, XCB_IMAGE_FORMAT_Z_PIXMAP,
                          shared_->name(), static_cast<std::uint32_t>(offset))
            .sequence;
}

bool ScreenReader::receiveIntoMemory() const {
    return XReply<xcb_shm_get_image_reply_t>(xcb_shm_get_image_reply(connection_.get(), {request_}, nullptr)) !=
           nullptr;
}

void ScreenReader::requestThroughConnection(const RowSpan& rows) {
    request_ =
        xcb_get_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, place_.drawable,
                      static_cast<std::int16_t>(place_.x + area_.visible.x),
                      static_cast<std::int16_t>(place_.y + rows.top), static_cast<std::uint16_t>(area_.visible.width),
                      static_cast<std::uint16_t>(rows.count()), allPlanes)
            .sequence;
}

bool ScreenReader::receiveThroughConnection(CVPixelBuffer& picture, const RowSpan& rows) const {
    const XReply<xcb_get_image_reply_t> reply(xcb_get_image_reply(connection_.get(), {request_}, nullptr));
    if (!reply) {
        return false;
    }
    const std::size_t rowBytes = static_cast<std::size_t>(area_.visible.width) * bytesPerPixel;
    const std::uint8_t* from = xcb_get_image_data(reply.get());
    for (std::int32_t row = rows.top; row < rows.bottom; ++row, from += rowBytes) {
        std::byte* to = picture.mutableBytes() + static_cast<std::size_t>(row) * layout_.bytesPerRow;
        std::memcpy(to + static_cast<std::size_t>(area_.visible.x) * bytesPerPixel, from, rowBytes);
    }
    return true;
}

}  // namespace zorvane
