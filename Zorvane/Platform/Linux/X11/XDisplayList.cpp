#include "Zorvane/Platform/Linux/X11/XDisplayList.hpp"

#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Zorvane/Platform/Linux/X11/DisplaySerials.hpp"
#include "Zorvane/Platform/Linux/X11/EDID.hpp"
#include "Zorvane/Platform/Linux/X11/XAtoms.hpp"
#include "Zorvane/Platform/Linux/X11/XConnection.hpp"
#include "Zorvane/Platform/Linux/X11/XReply.hpp"

namespace zorvane {
namespace {

/// A display before it has its number.
struct Found {
    DisplayIdentity identity;
    CGDisplayProperties properties;
    double refreshRate = 0;
};

bool isBuiltInConnector(std::string_view connector) {
    constexpr std::array<std::string_view, 3> prefixes{"eDP", "LVDS", "DSI"};
    return std::any_of(prefixes.begin(), prefixes.end(),
                       [&](std::string_view prefix) { return connector.starts_with(prefix); });
}

/// RANDR turns counter-clockwise; reflections don't count.
double clockwiseDegrees(std::uint16_t rotation) {
    if (rotation & XCB_RANDR_ROTATION_ROTATE_90) {
        return 270;
    }
    if (rotation & XCB_RANDR_ROTATION_ROTATE_180) {
        return 180;
    }
    return rotation & XCB_RANDR_ROTATION_ROTATE_270 ? 90 : 0;
}

/// In Hz; 0 for a mode that doesn't say.
double refreshRate(const xcb_randr_mode_info_t& mode) {
    double dots = static_cast<double>(mode.htotal) * mode.vtotal;
    if (mode.mode_flags & XCB_RANDR_MODE_FLAG_DOUBLE_SCAN) {
        dots *= 2;
    }
    if (mode.mode_flags & XCB_RANDR_MODE_FLAG_INTERLACE) {
        dots /= 2;
    }
    return dots > 0 ? mode.dot_clock / dots : 0;
}

/// The refresh rates of the modes that a server knows.
class RefreshRates {
  public:
    explicit RefreshRates(const XConnection& connection)
        : connection_(connection.get()),
          query_(xcb_randr_get_screen_resources_current(connection_, connection.root())) {}

    /// Waits for the server. Once.
    void receive() { reply_.reset(xcb_randr_get_screen_resources_current_reply(connection_, query_, nullptr)); }

    double operator[](xcb_randr_mode_t mode) const {
        if (reply_) {
            const auto* modes = xcb_randr_get_screen_resources_current_modes(reply_.get());
            const auto* end = modes + xcb_randr_get_screen_resources_current_modes_length(reply_.get());
            const auto* found = std::find_if(modes, end, [&](const auto& each) { return each.id == mode; });
            return found != end ? refreshRate(*found) : 0;
        }
        return 0;
    }

  private:
    xcb_connection_t* connection_;
    xcb_randr_get_screen_resources_current_cookie_t query_;
    XReply<xcb_randr_get_screen_resources_current_reply_t> reply_;
};

/// All questions about one monitor. They are sent for all monitors before the first answer is waited for.
class MonitorQuery {
  public:
    MonitorQuery(const XConnection& connection, xcb_atom_t edidAtom, const xcb_randr_monitor_info_t& monitor)
        : connection_(connection.get()), monitor_(monitor), name_(xcb_get_atom_name(connection_, monitor.name)) {
        constexpr std::uint32_t wordsToRead = 256 * 128 / 4;  // the most that EDID allows
        if (xcb_randr_monitor_info_outputs_length(&monitor) > 0) {
            const xcb_randr_output_t output = xcb_randr_monitor_info_outputs(&monitor)[0];
            output_ = {
                xcb_randr_get_output_property(connection_, output, edidAtom, XCB_ATOM_INTEGER, 0, wordsToRead, 0, 0),
                xcb_randr_get_output_info(connection_, output, XCB_CURRENT_TIME)};
        }
    }

    Found answer(std::uint32_t unitNumber, const RefreshRates& refreshRates) const {
        Found found;
        found.properties.isMain = monitor_.primary != 0;
        found.properties.isActive = true;
        found.properties.bounds = CGRect::make(monitor_.x, monitor_.y, monitor_.width, monitor_.height);
        found.properties.physicalSize = {static_cast<double>(monitor_.width_in_millimeters),
                                         static_cast<double>(monitor_.height_in_millimeters)};
        found.properties.unitNumber = unitNumber;
        found.identity.connector = name();
        if (output_) {
            addOutput(found, refreshRates);
        }
        return found;
    }

  private:
    struct OutputQuery {
        xcb_randr_get_output_property_cookie_t edid;
        xcb_randr_get_output_info_cookie_t info;
    };

    std::string name() const {
        const XReply<xcb_get_atom_name_reply_t> reply(xcb_get_atom_name_reply(connection_, name_, nullptr));
        if (!reply) {
            return {};
        }
        return {xcb_get_atom_name_name(reply.get()),
                static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
    }

    void addOutput(Found& found, const RefreshRates& refreshRates) const {
        found.identity.edid = readEDID();
        found.properties.isBuiltIn = isBuiltInConnector(found.identity.connector);
        if (const auto controller = readController()) {
            found.properties.rotation = clockwiseDegrees(controller->rotation);
            found.refreshRate = refreshRates[controller->mode];
        }
        found.properties.localizedName = found.identity.connector;
        if (const auto edid = EDID::parse(found.identity.edid)) {
            found.properties.vendorNumber = edid->vendorNumber;
            found.properties.modelNumber = edid->modelNumber;
            if (edid->name) {
                found.properties.localizedName = edid->name;
            }
        }
    }

    std::vector<std::uint8_t> readEDID() const {
        const XReply<xcb_randr_get_output_property_reply_t> reply(
            xcb_randr_get_output_property_reply(connection_, output_->edid, nullptr));
        if (!reply || reply->format != 8) {
            return {};
        }
        const std::uint8_t* data = xcb_randr_get_output_property_data(reply.get());
        return {data, data + xcb_randr_get_output_property_data_length(reply.get())};
    }

    /// Null if the output shows nothing.
    XReply<xcb_randr_get_crtc_info_reply_t> readController() const {
        const XReply<xcb_randr_get_output_info_reply_t> info(
            xcb_randr_get_output_info_reply(connection_, output_->info, nullptr));
        if (!info || info->crtc == XCB_NONE) {
            return nullptr;
        }
        const auto query = xcb_randr_get_crtc_info(connection_, info->crtc, XCB_CURRENT_TIME);
        return XReply<xcb_randr_get_crtc_info_reply_t>(xcb_randr_get_crtc_info_reply(connection_, query, nullptr));
    }

    xcb_connection_t* connection_;
    const xcb_randr_monitor_info_t& monitor_;
    xcb_get_atom_name_cookie_t name_;
    std::optional<OutputQuery> output_;
};

std::vector<Found> readMonitors(const XConnection& connection) {
    const auto query = xcb_randr_get_monitors(connection.get(), connection.root(), 1);
    const auto edidAtom = internAtom(connection, "EDID");
    const XReply<xcb_randr_get_monitors_reply_t> reply(xcb_randr_get_monitors_reply(connection.get(), query, nullptr));
    if (!reply) {
        return {};
    }
    RefreshRates refreshRates(connection);
    std::vector<MonitorQuery> queries;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(reply.get()); each.rem > 0;
         xcb_randr_monitor_info_next(&each)) {
        queries.emplace_back(connection, edidAtom, *each.data);
    }
    refreshRates.receive();
    std::vector<Found> all;
    for (const MonitorQuery& each : queries) {
        all.push_back(each.answer(static_cast<std::uint32_t>(all.size()), refreshRates));
    }
    return all;
}

std::vector<Found> readRootWindow(const XConnection& connection) {
    const auto query = xcb_get_geometry(connection.get(), connection.root());
    const XReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(connection.get(), query, nullptr));
    connection.requireAlive();
    if (!geometry) {
        return {};
    }
    const xcb_screen_t& screen = connection.screen();
    Found found;
    found.properties.isActive = true;
    found.properties.bounds = CGRect::make(0, 0, geometry->width, geometry->height);
    found.properties.physicalSize = {static_cast<double>(screen.width_in_millimeters),
                                     static_cast<double>(screen.height_in_millimeters)};
    return {found};
}

void markMainDisplay(std::vector<Found>& found) {
    auto main = std::find_if(found.begin(), found.end(), [](const Found& each) { return each.properties.isMain; });
    if (main == found.end()) {
        main = found.begin();
        main->properties.isMain = true;
    }
    std::rotate(found.begin(), main, main + 1);
}

/// A display that shows the same area as one before it mirrors that one.
void markMirrors(std::vector<XDisplay>& displays) {
    for (auto mirror = displays.begin(); mirror != displays.end(); ++mirror) {
        const auto original = std::find_if(displays.begin(), mirror, [&](const XDisplay& each) {
            return each.properties.bounds == mirror->properties.bounds;
        });
        mirror->properties.mirrors = original == mirror ? 0 : original->displayID;
    }
}

std::vector<XDisplay> numbered(const std::vector<Found>& found) {
    std::vector<DisplayIdentity> identities;
    for (const Found& each : found) {
        identities.push_back(each.identity);
    }
    const auto serialNumbers = DisplayNumbering::shared().assign(identities);
    std::vector<XDisplay> displays;
    for (std::size_t index = 0; index < found.size(); ++index) {
        displays.push_back({serialNumbers[index], found[index].properties, found[index].refreshRate});
        displays.back().properties.serialNumber = serialNumbers[index];
    }
    return displays;
}

}  // namespace

std::vector<XDisplay> readDisplays(const XConnection& connection) {
    std::vector<Found> found;
    if (connection.extensions().randr.isAtLeast(1, 5)) {
        found = readMonitors(connection);
    }
    if (found.empty()) {
        found = readRootWindow(connection);
    }
    connection.requireAlive();
    if (found.empty()) {
        return {};
    }
    markMainDisplay(found);
    auto displays = numbered(found);
    markMirrors(displays);
    return displays;
}

}  // namespace zorvane
