#include "Zorvane/Internal/CGInterop/Display.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <tuple>

#include "Zorvane/Interop/Closure.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane::CGInterop {
namespace {

constexpr std::uint32_t appleWirelessVendor = 0x6161706C;
constexpr std::uint32_t appleVendor = 0x0610;
constexpr std::uint32_t goldStarVendor = 0x1E6D;

struct VendorName {
    std::uint32_t vendorNumber;
    const char* name;
};

// PNP codes of the vendors whose panels often carry no name of their own.
constexpr std::array vendorNames{
    VendorName{goldStarVendor, "LG Display"}, VendorName{0x30E4, "LG Display"},   VendorName{0x10AC, "Dell Display"},
    VendorName{0x26CD, "iiyama Display"},     VendorName{0x3064, "Eiki Display"}, VendorName{0x410C, "Philips Display"},
    VendorName{0x4C2D, "Samsung Display"},
};

Display makeDisplay(CGDirectDisplayID displayID, const CGDisplayProperties& properties) {
    Display display;
    display.displayID = displayID;
    display.isMain = properties.isMain;
    display.isActive = properties.isActive;
    display.isBuiltIn = properties.isBuiltIn;
    if (properties.mirrors != 0) {
        display.mirrorOf = properties.mirrors;
    }
    display.frame = properties.bounds;
    display.rotation = properties.rotation;
    display.physicalSize = properties.physicalSize;
    display.modelNumber = properties.modelNumber;
    display.serialNumber = properties.serialNumber;
    display.unitNumber = properties.unitNumber;
    display.vendorNumber = properties.vendorNumber;
    return display;
}

bool holds(const CGRect& area, const CGPoint& point) {
    return point.x >= area.origin.x && point.x < area.maxX() && point.y >= area.origin.y && point.y < area.maxY();
}

void reconfigured(CGDirectDisplayID displayID, CGDisplayChangeSummaryFlags flags, void* userInfo) {
    Closure<Display::Reconfiguration>::Object::from(userInfo).invoke({displayID, flags});
}

bool standsBefore(const Display& a, const Display& b) {
    const auto key = [](const Display& display) {
        return std::tuple(!display.isMain, display.frame.origin.x, display.frame.origin.y, display.displayID);
    };
    return key(a) < key(b);
}

}  // namespace

std::vector<Display> Display::getActiveDisplays() {
    const auto platform = Platform::current();
    std::vector<Display> displays;
    for (const CGDirectDisplayID displayID : platform->displays->activeDisplayList()) {
        // A display that goes away between the two questions is not active any more.
        if (const auto properties = platform->displays->properties(displayID)) {
            displays.push_back(makeDisplay(displayID, *properties));
        }
    }
    std::sort(displays.begin(), displays.end(), standsBefore);
    return displays;
}

std::optional<Display> Display::forID(CGDirectDisplayID displayID) {
    const auto properties = Platform::current()->displays->properties(displayID);
    return properties ? std::optional(makeDisplay(displayID, *properties)) : std::nullopt;
}

std::vector<CGDirectDisplayID> Display::getActiveDisplays(const CGPoint& containing) {
    const auto platform = Platform::current();
    std::vector<CGDirectDisplayID> displays = platform->displays->activeDisplayList();
    std::erase_if(displays, [&](CGDirectDisplayID active) {
        const auto properties = platform->displays->properties(active);
        return !properties || !holds(properties->bounds, containing);
    });
    return displays;
}

AsyncStream<Display::Reconfiguration> Display::allReconfigurations() {
    auto [stream, source] = AsyncStream<Reconfiguration>::make(StreamBuffering::unbounded());
    const Closure<Reconfiguration> closure([source](const Reconfiguration& change) { source.yield(change); });
    const auto displays = Platform::current()->displays;
    displays->registerReconfigurationCallback(reconfigured, closure.pointer());
    source.onTermination(
        [displays, closure] { displays->removeReconfigurationCallback(reconfigured, closure.pointer()); });
    return std::move(stream);
}

std::string Display::displayName() const {
    return nameForTesting ? *nameForTesting : displayName({displayID});
}

std::string Display::displayName(std::set<CGDirectDisplayID> named) const {
    std::string name = ownName();
    if (mirrorOf && named.insert(*mirrorOf).second) {
        const auto mirrored = forID(*mirrorOf);
        name += fmt::format(" (mirror of {})",
                            mirrored ? mirrored->displayName(named) : fmt::format("Display #{}", *mirrorOf));
    }
    return name == "Sidecar Display (AirPlay)" ? "iPad Sidecar" : name;
}

std::string Display::ownName() const {
    const auto properties = Platform::current()->displays->properties(displayID);
    if (properties && properties->localizedName) {
        return *properties->localizedName;
    }
    return vendorSerialName().value_or(fmt::format("Display #{}", displayID));
}

std::optional<std::string> Display::vendorSerialName() const {
    if (vendorNumber == appleWirelessVendor && unitNumber == 1337) {
        return "Sidecar Display (AirPlay)";
    }
    if (vendorNumber == appleWirelessVendor && unitNumber == 0) {
        return "AirPlay Display";
    }
    if (vendorNumber == appleVendor) {
        return modelNumber == 0xA04E ? "Built-in Retina Display" : "Apple Display";
    }
    if (vendorNumber == goldStarVendor && modelNumber == 0x5B11) {
        return "LG UltraFine";
    }
    const auto* known = std::find_if(vendorNames.begin(), vendorNames.end(),
                                     [this](const VendorName& entry) { return entry.vendorNumber == vendorNumber; });
    return known != vendorNames.end() ? std::optional<std::string>(known->name) : std::nullopt;
}

}  // namespace zorvane::CGInterop
