#include "Zorvane/Platform/Linux/PermissionRules.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <optional>
#include <vector>

namespace zorvane {
namespace {

using Status = AVAuthorizationStatus;
using Reach = XServerFacts::Reach;

constexpr const char* logInToX11 =
    "Log in to an X11 session; many login screens offer one whose name ends in \"on Xorg\".";

ZVPermissionReport unnamedServer(const SessionFacts& session) {
    if (session.isWayland) {
        return {Status::restricted, "This is a Wayland session without an X server, and only X servers are supported.",
                logInToX11};
    }
    return {Status::restricted, "There is no X server: DISPLAY isn't set.",
            "Start the program inside a desktop session, or set DISPLAY to the server's name, such as \":0\"."};
}

/// Why the X server allows nothing; nothing if it can be reached.
std::optional<ZVPermissionReport> judgeReach(const XServerFacts& server, const SessionFacts& session) {
    switch (server.reach) {
        case Reach::reachable:
            return std::nullopt;
        case Reach::unnamed:
            return unnamedServer(session);
        case Reach::absent:
            return {{Status::restricted, fmt::format("There is no X server \"{}\".", server.name),
                     "Set DISPLAY to the name of a server that runs, such as \":0\"."}};
        case Reach::refused:
            return {{Status::denied, fmt::format("The X server \"{}\" doesn't let this process in.", server.name),
                     "Run the program as the user who is logged in to the desktop, with XAUTHORITY as it is there."}};
        case Reach::silent:
            return {{Status::restricted, fmt::format("The X server \"{}\" doesn't answer.", server.name),
                     "If it goes on, restart the desktop session."}};
        case Reach::outOfReach:
            return {{Status::restricted, fmt::format("The X server \"{}\" can't be reached.", server.name),
                     "Check that DISPLAY is right, that the server runs and that it lets this user in (XAUTHORITY)."}};
    }
    return std::nullopt;
}

struct Extension {
    const char* name;
    bool isPresent;
};

/// What a permission takes, and what it means to have it.
struct DesktopNeeds {
    std::vector<Extension> extensions;
    const char* use;             ///< what can't be done without
    const char* allowed;         ///< what can be done
    const char* limitOnWayland;  ///< how far that goes on an X server inside a Wayland session
};

DesktopNeeds needsOf(ZVPermission permission, const XServerFacts& server) {
    switch (permission) {
        case ZVPermission::inputMonitoring:
            return {{{"RECORD", server.hasRecord}},
                    "mouse and keyboard can't be followed",
                    "tells this process of all input",
                    "it tells only of input to applications that use X"};
        case ZVPermission::accessibilityControl:
            return {{{"XTEST", server.hasXTest}},
                    "pointer and keys can't be operated",
                    "takes input from this process",
                    "only applications that use X get that input"};
        default:
            return {{{"DAMAGE", server.hasDamage}, {"XFIXES 2", server.hasXFixes}},
                    "its screen can't be recorded",
                    "shows this process its screen",
                    "it shows only applications that use X"};
    }
}

ZVPermissionReport lacking(const XServerFacts& server, const DesktopNeeds& needs) {
    std::vector<std::string> missing;
    for (const Extension& extension : needs.extensions) {
        if (!extension.isPresent) {
            missing.emplace_back(extension.name);
        }
    }
    return {Status::restricted,
            fmt::format("The X server \"{}\" has no {}, without which {}.", server.name, fmt::join(missing, " and no "),
                        needs.use),
            "Use an X server that has it."};
}

ZVPermissionReport allowing(const XServerFacts& server, const DesktopNeeds& needs, const SessionFacts& session) {
    ZVPermissionReport report;
    report.explanation = fmt::format("The X server \"{}\" {}.", server.name, needs.allowed);
    if (session.isWayland) {
        report.explanation += fmt::format(" If it is part of this Wayland session, {}.", needs.limitOnWayland);
        report.remedy = logInToX11;
    }
    return report;
}

std::string listed(const std::vector<std::string>& paths) {
    return fmt::format("{}", fmt::join(paths, ", "));
}

std::string remedyForClosed(const CameraNodes& nodes) {
    if (nodes.group.empty() || nodes.group == "root") {
        return "Ask the administrator for access to them.";
    }
    return fmt::format("Add yourself to the group {0}, then log in again: sudo usermod -aG {0} \"$USER\"", nodes.group);
}

}  // namespace

ZVPermissionReport judgeDesktop(ZVPermission permission, const XServerFacts& server, const SessionFacts& session) {
    if (const auto report = judgeReach(server, session)) {
        return *report;
    }
    const DesktopNeeds needs = needsOf(permission, server);
    for (const Extension& extension : needs.extensions) {
        if (!extension.isPresent) {
            return lacking(server, needs);
        }
    }
    return allowing(server, needs, session);
}

ZVPermissionReport judgeSound(const PipeWireStatus& pipeWire, const SessionFacts& session) {
    using Reachability = PipeWireStatus::Reachability;
    if (pipeWire.reachability == Reachability::reachable) {
        return {Status::authorized, "PipeWire can be reached.", ""};
    }
    if (session.isFlatpak) {
        return {Status::notDetermined,
                "In a Flatpak the user is asked through the desktop portal, which isn't supported.",
                "Let the sandbox use PipeWire: flatpak override --user --filesystem=xdg-run/pipewire-0 APPLICATION"};
    }
    if (pipeWire.reachability == Reachability::permissionDenied) {
        return {Status::denied, fmt::format("PipeWire at \"{}\" doesn't let this user in.", pipeWire.socketPath),
                "Run the program as the user who is logged in to the desktop."};
    }
    return {Status::restricted, fmt::format("PipeWire doesn't run: nobody listens at \"{}\".", pipeWire.socketPath),
            "Start it: systemctl --user start pipewire wireplumber"};
}

ZVPermissionReport judgeCamera(const PipeWireStatus& pipeWire, const CameraNodes& nodes, const SessionFacts& session) {
    ZVPermissionReport report = judgeSound(pipeWire, session);
    if (report.status != Status::authorized) {
        return report;
    }
    if (!nodes.closed.empty()) {
        report.status = nodes.open.empty() ? Status::denied : Status::authorized;
        report.explanation += fmt::format(" This user may not use {}.", listed(nodes.closed));
        report.remedy = remedyForClosed(nodes);
    } else if (nodes.open.empty()) {
        report.explanation += " There is no camera in \"/dev\"; PipeWire may know others.";
    }
    return report;
}

}  // namespace zorvane
