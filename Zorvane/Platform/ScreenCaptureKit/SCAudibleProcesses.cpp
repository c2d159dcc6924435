#include "Zorvane/Platform/ScreenCaptureKit/SCAudibleProcesses.hpp"

#include <algorithm>

namespace zorvane {
namespace {

bool haveCommon(std::span<const std::int32_t> some, std::span<const std::int32_t> others) {
    return std::ranges::any_of(some, [&](std::int32_t each) { return std::ranges::count(others, each) > 0; });
}

std::vector<std::int32_t> processesOf(const std::vector<SCRunningApplication>& applications) {
    std::vector<std::int32_t> processes;
    for (const SCRunningApplication& application : applications) {
        processes.push_back(application.processID);
    }
    return processes;
}

/// What the filter's lists say, whatever its subject.
SCAudibleProcesses listedIn(const SCContentFilter& filter) {
    switch (filter.kind) {
        case SCContentFilterKind::includingApplications:
            return {.only = processesOf(filter.applications), .except = {}};
        case SCContentFilterKind::excludingApplications:
            return {.only = std::nullopt, .except = processesOf(filter.applications)};
        case SCContentFilterKind::includingWindows:
        case SCContentFilterKind::excludingWindows:
            return {};
    }
    return {};
}

std::vector<std::int32_t> ownerOf(const SCWindow& window) {
    return window.owningApplication ? std::vector{window.owningApplication->processID} : std::vector<std::int32_t>{};
}

}  // namespace

bool SCAudibleProcesses::include(std::span<const std::int32_t> lineage) const {
    return (!only || haveCommon(lineage, *only)) && !haveCommon(lineage, except);
}

SCAudibleProcesses audibleProcesses(const SCContentFilter& filter, const SCStreamConfiguration& configuration,
                                    std::int32_t currentProcess) {
    SCAudibleProcesses audible = listedIn(filter);
    if (filter.subject) {
        std::vector<std::int32_t> owner = ownerOf(*filter.subject);
        const bool stays = audible.include(owner);
        audible.only = stays ? std::move(owner) : std::vector<std::int32_t>{};
    }
    if (configuration.excludesCurrentProcessAudio) {
        audible.except.push_back(currentProcess);
    }
    return audible;
}

}  // namespace zorvane
