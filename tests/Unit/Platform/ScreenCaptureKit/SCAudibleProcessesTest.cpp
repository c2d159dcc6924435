#include "Zorvane/Platform/ScreenCaptureKit/SCAudibleProcesses.hpp"

#include <gtest/gtest.h>

#include <array>

namespace zorvane {
namespace {

using Processes = std::vector<std::int32_t>;
using enum SCContentFilterKind;

constexpr std::int32_t self = 99;

SCContentFilter filter(SCContentFilterKind kind, const Processes& applications, std::optional<SCWindow> subject = {}) {
    SCContentFilter filter{.kind = kind, .subject = std::move(subject)};
    for (const std::int32_t each : applications) {
        filter.applications.push_back({.processID = each});
    }
    return filter;
}

SCWindow windowOf(std::int32_t process) {
    return {.windowID = 1, .owningApplication = SCRunningApplication{.processID = process}};
}

bool hears(const SCAudibleProcesses& audible, Processes lineage) {
    return audible.include(lineage);
}

TEST(SCAudibleProcessesTest, AFilterSaysWhoseSoundIsHeard) {
    struct Case {
        const char* what;
        SCContentFilter filter;
        SCAudibleProcesses expected;
    };
    const Case cases[] = {
        {"whole screen", filter(excludingApplications, {}), {}},
        {"by windows, which have no sound of their own", filter(includingWindows, {}), {}},
        {"without some", filter(excludingApplications, {10, 20}), {.only = {}, .except = {10, 20}}},
        {"some", filter(includingApplications, {10}), {.only = Processes{10}, .except = {}}},
        {"none of them is left", filter(includingApplications, {}), {.only = Processes{}, .except = {}}},
        {"crop", filter(excludingWindows, {}, windowOf(10)), {.only = Processes{10}, .except = {}}},
        {"crop of nobody's window", filter(excludingWindows, {}, SCWindow{}), {.only = Processes{}, .except = {}}},
        {"crop of one that stays",
         filter(includingApplications, {10, 20}, windowOf(10)),
         {.only = Processes{10}, .except = {}}},
        {"crop of one that doesn't",
         filter(includingApplications, {20}, windowOf(10)),
         {.only = Processes{}, .except = {}}},
        {"crop of one that is left out",
         filter(excludingApplications, {10}, windowOf(10)),
         {.only = Processes{}, .except = {10}}},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(audibleProcesses(each.filter, {}, self), each.expected) << each.what;
    }
}

TEST(SCAudibleProcessesTest, TheCurrentProcessIsLeftOutOnRequestWhateverTheFilter) {
    const SCStreamConfiguration configuration{.excludesCurrentProcessAudio = true};
    for (const SCContentFilterKind kind : {includingWindows, excludingApplications, includingApplications}) {
        const auto audible = audibleProcesses(filter(kind, {self, 10}), configuration, self);
        EXPECT_FALSE(audible.areAll());
        EXPECT_FALSE(hears(audible, {self, 1}));
        EXPECT_FALSE(hears(audible, {100, self, 1})) << "a process that it has started";
        EXPECT_EQ(hears(audible, {11, 10, 1}), kind != excludingApplications);
    }
}

TEST(SCAudibleProcessesTest, AChosenApplicationsChildrenAreHeardAndAnUnknownProcessIsNot) {
    const auto chosen = audibleProcesses(filter(includingApplications, {10}), {}, self);
    EXPECT_TRUE(hears(chosen, {10, 1}));
    EXPECT_TRUE(hears(chosen, {12, 11, 10, 1}));
    EXPECT_FALSE(hears(chosen, {1})) << "its parent";
    EXPECT_FALSE(hears(chosen, {})) << "nobody knows whose it is";
}

}  // namespace
}  // namespace zorvane
