#include "Zorvane/Platform/Virtual/VirtualScene.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace zorvane {
namespace {

/// A picture being drawn, and the area of the display that it shows.
class Drawing {
  public:
    Drawing(CVPixelBuffer& picture, const CGRect& source) : picture_(picture), source_(source) {}

    void fill(const VirtualColor& color) { fillColumns(0, layout().width, 0, layout().height, color); }

    /// `rect` is in pixels of the display.
    void fill(const CGRect& rect, const VirtualColor& color) {
        fillColumns(column(rect.origin.x), column(rect.maxX()), line(rect.origin.y), line(rect.maxY()), color);
    }

    /// The screen, and black where the source reaches beyond it.
    void copy(const VirtualScreen& screen) {
        const bool isOneToOne = source_.size.width == layout().width && source_.size.height == layout().height;
        for (std::int32_t y = 0; y < layout().height; ++y) {
            const std::int32_t sourceY = sourceLine(y);
            if (sourceY < 0 || sourceY >= screen.height()) {
                std::fill_n(row(y), layout().width, black_);
            } else if (isOneToOne) {
                copyRow(screen.row(layout().format, sourceY), screen.width(), row(y));
            } else {
                scaleRow(screen.row(layout().format, sourceY), screen.width(), row(y));
            }
        }
    }

  private:
    const CVPixelLayout& layout() const { return picture_.layout(); }

    std::uint32_t* row(std::int32_t y) {
        return reinterpret_cast<std::uint32_t*>(picture_.mutableBytes() +
                                                static_cast<std::size_t>(y) * layout().bytesPerRow);
    }

    std::int32_t sourceColumn(std::int32_t x) const {
        return static_cast<std::int32_t>(
            std::floor(source_.origin.x + (x + 0.5) * source_.size.width / layout().width));
    }
    std::int32_t sourceLine(std::int32_t y) const {
        return static_cast<std::int32_t>(
            std::floor(source_.origin.y + (y + 0.5) * source_.size.height / layout().height));
    }
    std::int32_t column(double sourceX) const {
        const double x = std::round((sourceX - source_.origin.x) * layout().width / source_.size.width);
        return static_cast<std::int32_t>(std::clamp(x, 0.0, static_cast<double>(layout().width)));
    }
    std::int32_t line(double sourceY) const {
        const double y = std::round((sourceY - source_.origin.y) * layout().height / source_.size.height);
        return static_cast<std::int32_t>(std::clamp(y, 0.0, static_cast<double>(layout().height)));
    }

    void copyRow(const std::uint32_t* from, std::int32_t available, std::uint32_t* to) const {
        const std::int32_t offset = sourceColumn(0);
        const std::int32_t begin = std::clamp(-offset, 0, layout().width);
        const std::int32_t end = std::clamp(available - offset, begin, layout().width);
        std::fill(to, to + begin, black_);
        std::copy(from + offset + begin, from + offset + end, to + begin);
        std::fill(to + end, to + layout().width, black_);
    }

    void scaleRow(const std::uint32_t* from, std::int32_t available, std::uint32_t* to) const {
        for (std::int32_t x = 0; x < layout().width; ++x) {
            const std::int32_t sourceX = sourceColumn(x);
            to[x] = sourceX >= 0 && sourceX < available ? from[sourceX] : black_;
        }
    }

    void fillColumns(std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom,
                     const VirtualColor& color) {
        const std::uint32_t pixel = color.pixel(layout().format);
        for (std::int32_t y = top; y < bottom; ++y) {
            std::fill(row(y) + left, row(y) + std::max(left, right), pixel);
        }
    }

    CVPixelBuffer& picture_;
    const CGRect source_;  // pixels of the display
    const std::uint32_t black_ = VirtualColor::black().pixel(layout().format);
};

CGRect scaled(const CGRect& rect, double scale) {
    return CGRect::make(rect.origin.x * scale, rect.origin.y * scale, rect.size.width * scale,
                        rect.size.height * scale);
}

bool isDesktopWindow(const SCWindow& window) {
    return window.windowLayer < 0;
}

/// A white square with a black rim, its top left at the hot spot.
void drawPointer(Drawing& drawing, const CGPoint& position, double scale) {
    const CGRect outer = CGRect::make(position.x * scale, position.y * scale, 12 * scale, 12 * scale);
    drawing.fill(outer, VirtualColor::black());
    drawing.fill(CGRect::make(outer.origin.x + 2 * scale, outer.origin.y + 2 * scale, 8 * scale, 8 * scale),
                 VirtualColor::white());
}

}  // namespace

std::int32_t VirtualDisplay::pixelWidth() const {
    return static_cast<std::int32_t>(frame.size.width * pixelScale());
}

std::int32_t VirtualDisplay::pixelHeight() const {
    return static_cast<std::int32_t>(frame.size.height * pixelScale());
}

CGDisplayProperties VirtualDisplay::properties(bool isMain) const {
    CGDisplayProperties properties;
    properties.isMain = isMain;
    properties.isActive = true;
    properties.isBuiltIn = isBuiltIn;
    properties.mirrors = mirrors;
    properties.bounds = frame;
    properties.modelNumber = modelNumber;
    properties.serialNumber = serialNumber;
    properties.unitNumber = unitNumber;
    properties.vendorNumber = vendorNumber;
    properties.localizedName = name;
    return properties;
}

std::optional<CGDisplayMode> VirtualDisplay::mode() const {
    if (!scale) {
        return std::nullopt;
    }
    return CGDisplayMode{static_cast<std::uint32_t>(frame.size.width), static_cast<std::uint32_t>(frame.size.height),
                         static_cast<std::uint32_t>(pixelWidth()), static_cast<std::uint32_t>(pixelHeight()),
                         refreshRate};
}

const VirtualScene::Panel* VirtualScene::find(CGDirectDisplayID displayID) const {
    const auto found = std::find_if(panels.begin(), panels.end(),
                                    [displayID](const Panel& panel) { return panel.display.displayID == displayID; });
    return found == panels.end() ? nullptr : &*found;
}

VirtualScene::Panel* VirtualScene::find(CGDirectDisplayID displayID) {
    return const_cast<Panel*>(std::as_const(*this).find(displayID));
}

const VirtualWindow* VirtualScene::findWindow(std::uint32_t windowID) const {
    const auto found = std::find_if(windows.begin(), windows.end(), [windowID](const VirtualWindow& entry) {
        return entry.window.windowID == windowID;
    });
    return found == windows.end() ? nullptr : &*found;
}

VirtualWindow* VirtualScene::findWindow(std::uint32_t windowID) {
    return const_cast<VirtualWindow*>(std::as_const(*this).findWindow(windowID));
}

std::optional<SCRunningApplication> VirtualScene::frontmostApplication() const {
    const auto found = std::find_if(windows.begin(), windows.end(), [](const VirtualWindow& entry) {
        return entry.window.isOnScreen && entry.window.windowLayer == 0 && entry.window.owningApplication;
    });
    return found == windows.end() ? std::nullopt : found->window.owningApplication;
}

void VirtualScene::put(const VirtualDisplay& display) {
    Panel panel{display, VirtualScreen(display.pixelWidth(), display.pixelHeight(), display.gamut)};
    if (Panel* existing = find(display.displayID)) {
        *existing = std::move(panel);
    } else {
        panels.push_back(std::move(panel));
    }
}

std::vector<CGDirectDisplayID> VirtualScene::closeLid() {
    const auto covered = std::stable_partition(panels.begin(), panels.end(),
                                               [](const Panel& panel) { return !panel.display.isBuiltIn; });
    std::vector<CGDirectDisplayID> displays;
    for (auto panel = covered; panel != panels.end(); ++panel) {
        displays.push_back(panel->display.displayID);
    }
    std::move(covered, panels.end(), std::back_inserter(behindLid));
    panels.erase(covered, panels.end());
    return displays;
}

void VirtualScene::openLid() {
    std::move(panels.begin(), panels.end(), std::back_inserter(behindLid));
    panels = std::exchange(behindLid, {});
}

SCShareableContent VirtualScene::shareableContent(SCShareableContentScope scope) const {
    SCShareableContent content;
    for (const Panel& panel : panels) {
        content.displays.push_back({panel.display.displayID, panel.display.frame});
    }
    for (const VirtualWindow& entry : windows) {
        if (scope == SCShareableContentScope::all || (entry.window.isOnScreen && !isDesktopWindow(entry.window))) {
            content.windows.push_back(entry.window);
        }
    }
    content.applications = applications;
    return content;
}

void VirtualScene::draw(const Panel& panel, const SCContentFilter& filter, const SCStreamConfiguration& configuration,
                        CVPixelBuffer& picture) const {
    const double scale = panel.display.pixelScale();
    const CGPoint origin = panel.display.frame.origin;
    const CGRect whole = CGRect::make(0, 0, panel.display.frame.size.width, panel.display.frame.size.height);
    const CGRect source = scaled(configuration.sourceRect.value_or(whole), scale);

    Drawing drawing(picture, source);
    if (filter.showsDesktop()) {
        drawing.copy(panel.screen);
    } else {
        drawing.fill(VirtualColor::black());
    }
    for (auto entry = windows.rbegin(); entry != windows.rend(); ++entry) {
        if (entry->color && entry->window.isOnScreen && filter.shows(entry->window)) {
            drawing.fill(scaled(CGRectOffset(entry->window.frame, -origin.x, -origin.y), scale), *entry->color);
        }
    }
    if (configuration.showsCursor && pointer) {
        drawPointer(drawing, {pointer->x - origin.x, pointer->y - origin.y}, scale);
    }
}

}  // namespace zorvane
