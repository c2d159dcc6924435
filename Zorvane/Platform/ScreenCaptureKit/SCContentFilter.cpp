#include "Zorvane/Platform/ScreenCaptureKit/SCContentFilter.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace zorvane {
namespace {

const char* name(SCContentFilterKind kind) {
    switch (kind) {
        case SCContentFilterKind::includingWindows:
            return "includingWindows";
        case SCContentFilterKind::excludingWindows:
            return "excludingWindows";
        case SCContentFilterKind::includingApplications:
            return "includingApplications";
        case SCContentFilterKind::excludingApplications:
            return "excludingApplications";
    }
    return "unknown";
}

bool isOfSameApplication(const SCWindow& a, const SCWindow& b) {
    const bool haveOwners = a.owningApplication && b.owningApplication;
    return a.windowID == b.windowID || (haveOwners && a.owningApplication->processID == b.owningApplication->processID);
}

}  // namespace

bool SCContentFilter::showsEverything() const {
    if (subject) {
        return false;
    }
    switch (kind) {
        case SCContentFilterKind::excludingWindows:
            return windows.empty();
        case SCContentFilterKind::excludingApplications:
            return applications.empty() && windows.empty();
        case SCContentFilterKind::includingWindows:
        case SCContentFilterKind::includingApplications:
            return false;
    }
    return false;
}

bool SCContentFilter::shows(const SCWindow& window) const {
    if (subject && !isOfSameApplication(window, *subject)) {
        return false;
    }
    const bool isListed = std::any_of(windows.begin(), windows.end(),
                                      [&window](const SCWindow& listed) { return listed.windowID == window.windowID; });
    const bool isOfListedApplication =
        window.owningApplication &&
        std::any_of(applications.begin(), applications.end(), [&window](const SCRunningApplication& listed) {
            return listed.processID == window.owningApplication->processID;
        });
    switch (kind) {
        case SCContentFilterKind::includingWindows:
            return isListed;
        case SCContentFilterKind::excludingWindows:
            return !isListed;
        case SCContentFilterKind::includingApplications:
            return isOfListedApplication != isListed;
        case SCContentFilterKind::excludingApplications:
            return isOfListedApplication == isListed;
    }
    return false;
}

std::string SCContentFilter::debugDescription() const {
    std::vector<std::uint32_t> windowIDs;
    for (const SCWindow& window : windows) {
        windowIDs.push_back(window.windowID);
    }
    std::vector<std::int32_t> processIDs;
    for (const SCRunningApplication& application : applications) {
        processIDs.push_back(application.processID);
    }
    return fmt::format("SCContentFilter[{} display:{} applications:{} windows:{}]", name(kind),
                       display.debugDescription(), processIDs, windowIDs);
}

}  // namespace zorvane
