// What is on a virtual desktop at one moment, and how a stream sees it. Plain values, no thread, no clock.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/Platform/AppKit/NSImage.hpp"
#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCContentFilter.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"
#include "Zorvane/Platform/Virtual/VirtualCursor.hpp"
#include "Zorvane/Platform/Virtual/VirtualScreen.hpp"

namespace zorvane {

struct VirtualDisplay {
    CGDirectDisplayID displayID = 1;
    std::uint32_t serialNumber = 1;
    std::optional<std::string> name = "Virtual Display";
    CGRect frame = CGRect::make(0, 0, 1920, 1080);  ///< points, global coordinates
    std::optional<std::uint32_t> scale = 1;         ///< pixels per point; absent: the display tells no mode, and has 2
    double refreshRate = 60;                        ///< Hz
    VirtualScreen::Gamut gamut = VirtualScreen::Gamut::standard;
    bool isBuiltIn = false;         ///< goes away when the lid is closed
    CGDirectDisplayID mirrors = 0;  ///< the display that this one mirrors, 0 for none
    std::uint32_t vendorNumber = 0;
    std::uint32_t modelNumber = 0;
    std::uint32_t unitNumber = 0;

    bool operator==(const VirtualDisplay&) const = default;

    std::uint32_t pixelScale() const { return scale.value_or(2); }
    std::int32_t pixelWidth() const;
    std::int32_t pixelHeight() const;
    /// What a window server says of it; `isMain` depends on the other displays.
    CGDisplayProperties properties(bool isMain) const;
    std::optional<CGDisplayMode> mode() const;
};

/// A window: what is told of it, and the colour that fills it. Without a colour it can't be seen in a picture.
struct VirtualWindow {
    SCWindow window;
    std::optional<VirtualColor> color;
};

/// The first display is the main one.
struct VirtualScene {
    struct Panel {
        VirtualDisplay display;
        VirtualScreen screen;  ///< what lies behind the windows, in pixels of the display
    };

    std::vector<Panel> panels;
    std::vector<VirtualWindow> windows;  ///< front to back
    std::vector<SCRunningApplication> applications;
    std::map<std::int32_t, NSImage> icons;                                ///< by process id
    std::optional<CGPoint> pointer;                                       ///< points, global coordinates
    std::optional<NSCursor> cursor = virtualCursor(ZVCursorType::arrow);  ///< absent: it can't be asked for
    std::vector<Panel> behindLid;                                         ///< built-in displays while the lid is closed

    Panel* find(CGDirectDisplayID displayID);
    const Panel* find(CGDirectDisplayID displayID) const;

    VirtualWindow* findWindow(std::uint32_t windowID);
    const VirtualWindow* findWindow(std::uint32_t windowID) const;

    /// The owner of the frontmost window that is on the screen and of the ordinary level.
    std::optional<SCRunningApplication> frontmostApplication() const;

    /// Puts a display in place, in the place of the one with the same id if there is one, with a black screen.
    void put(const VirtualDisplay& display);

    /// Takes the built-in displays away and tells which ones.
    std::vector<CGDirectDisplayID> closeLid();
    /// Puts them back, as the first ones.
    void openLid();

    SCShareableContent shareableContent(SCShareableContentScope scope) const;

    /// Draws what a stream with `filter` and `configuration` shows into `picture`, whose layout decides the format:
    /// screen, windows back to front, pointer. Pictures of another size than the source are scaled by taking the
    /// nearest pixel; what lies outside the display is black. Precondition: `panel` has the picture's format.
    void draw(const Panel& panel, const SCContentFilter& filter, const SCStreamConfiguration& configuration,
              CVPixelBuffer& picture) const;
};

}  // namespace zorvane
