#include "Zorvane/Platform/Linux/PermissionRules.hpp"

#include <gmock/gmock.h>

#include <set>

namespace zorvane {
namespace {

using ::testing::HasSubstr;
using Reach = XServerFacts::Reach;
using Status = AVAuthorizationStatus;

constexpr std::array desktopPermissions{ZVPermission::screenRecording, ZVPermission::inputMonitoring,
                                        ZVPermission::accessibilityControl};

XServerFacts completeServer() {
    return {.reach = Reach::reachable,
            .name = ":5",
            .hasDamage = true,
            .hasXFixes = true,
            .hasRecord = true,
            .hasXTest = true};
}

PipeWireStatus pipeWire(PipeWireStatus::Reachability reachability) {
    return {reachability, "/run/user/1000/pipewire-0"};
}
const PipeWireStatus running = pipeWire(PipeWireStatus::Reachability::reachable);
const PipeWireStatus stopped = pipeWire(PipeWireStatus::Reachability::notRunning);
const PipeWireStatus forbidden = pipeWire(PipeWireStatus::Reachability::permissionDenied);

TEST(PermissionRules, AServerOutOfReachAllowsNothingAndEachReasonHasItsOwnWordsAndRemedy) {
    const struct {
        Reach reach;
        bool isWayland;
        Status status;
    } cases[] = {{Reach::unnamed, false, Status::restricted}, {Reach::unnamed, true, Status::restricted},
                 {Reach::absent, false, Status::restricted},  {Reach::refused, false, Status::denied},
                 {Reach::silent, false, Status::restricted},  {Reach::outOfReach, false, Status::restricted}};
    std::set<std::string> explanations;
    std::set<std::string> remedies;
    for (const auto& expected : cases) {
        XServerFacts server = completeServer();
        server.reach = expected.reach;
        for (const ZVPermission permission : desktopPermissions) {
            const auto report = judgeDesktop(permission, server, {.isWayland = expected.isWayland});
            EXPECT_EQ(report.status, expected.status) << report.explanation;
            explanations.insert(report.explanation);
            remedies.insert(report.remedy);
        }
    }
    EXPECT_EQ(explanations.size(), std::size(cases));
    EXPECT_EQ(remedies.size(), std::size(cases));
    EXPECT_FALSE(remedies.contains(""));
}

TEST(PermissionRules, EachPermissionTakesItsOwnExtensionsOfTheServer) {
    const struct {
        bool XServerFacts::*extension;
        ZVPermission permission;
        const char* name;
    } cases[] = {{&XServerFacts::hasDamage, ZVPermission::screenRecording, "DAMAGE"},
                 {&XServerFacts::hasXFixes, ZVPermission::screenRecording, "XFIXES"},
                 {&XServerFacts::hasRecord, ZVPermission::inputMonitoring, "RECORD"},
                 {&XServerFacts::hasXTest, ZVPermission::accessibilityControl, "XTEST"}};
    for (const auto& expected : cases) {
        XServerFacts server = completeServer();
        server.*expected.extension = false;
        for (const ZVPermission permission : desktopPermissions) {
            const auto report = judgeDesktop(permission, server, {});
            const bool isNeeded = permission == expected.permission;
            EXPECT_EQ(report.status, isNeeded ? Status::restricted : Status::authorized) << expected.name;
            EXPECT_EQ(report.explanation.find(expected.name) != std::string::npos, isNeeded) << report.explanation;
            EXPECT_EQ(report.remedy.empty(), !isNeeded);
        }
    }
    XServerFacts bare{.reach = Reach::reachable, .name = ":5"};
    EXPECT_EQ(judgeDesktop(ZVPermission::screenRecording, bare, {}).explanation,
              "The X server \":5\" has no DAMAGE and no XFIXES 2, without which its screen can't be recorded.");
}

TEST(PermissionRules, AServerInsideAWaylandSessionIsAllowedWithAWarning) {
    const auto report = judgeDesktop(ZVPermission::screenRecording, completeServer(), {.isWayland = true});
    EXPECT_EQ(report.status, Status::authorized);
    EXPECT_THAT(report.explanation, HasSubstr("only applications that use X"));
    EXPECT_THAT(report.remedy, HasSubstr("X11 session"));
}

TEST(PermissionRules, SoundIsPipeWiresToGive) {
    EXPECT_EQ(judgeSound(running, {}).status, Status::authorized);
    EXPECT_EQ(judgeSound(running, {.isFlatpak = true}).status, Status::authorized);
    EXPECT_EQ(judgeSound(forbidden, {}).status, Status::denied);
    const auto report = judgeSound(stopped, {});
    EXPECT_EQ(report.status, Status::restricted);
    EXPECT_THAT(report.explanation, HasSubstr("/run/user/1000/pipewire-0"));
    EXPECT_THAT(report.remedy, HasSubstr("systemctl --user start pipewire"));
    EXPECT_EQ(judgeSound(stopped, {.isFlatpak = true}).status, Status::notDetermined);
}

TEST(PermissionRules, CamerasTakePipeWireAndTheirDevices) {
    const CameraNodes open{.open = {"/dev/video0"}};
    const CameraNodes closed{.closed = {"/dev/video0", "/dev/video1"}, .group = "video"};
    EXPECT_EQ(judgeCamera(running, open, {}), (ZVPermissionReport{Status::authorized, "PipeWire can be reached.", ""}));
    EXPECT_EQ(judgeCamera(stopped, open, {}).status, Status::restricted);
    EXPECT_EQ(judgeCamera(running, {}, {}).status, Status::authorized);
    EXPECT_THAT(judgeCamera(running, {}, {}).explanation, HasSubstr("no camera"));

    const auto denied = judgeCamera(running, closed, {});
    EXPECT_EQ(denied.status, Status::denied);
    EXPECT_THAT(denied.explanation, HasSubstr("/dev/video0, /dev/video1"));
    EXPECT_THAT(denied.remedy, HasSubstr("usermod -aG video"));
    const auto mixed = judgeCamera(running, {.open = {"/dev/video2"}, .closed = {"/dev/video0"}, .group = "root"}, {});
    EXPECT_EQ(mixed.status, Status::authorized);
    EXPECT_THAT(mixed.explanation, HasSubstr("/dev/video0"));
    EXPECT_THAT(mixed.remedy, HasSubstr("administrator"));
}

}  // namespace
}  // namespace zorvane
