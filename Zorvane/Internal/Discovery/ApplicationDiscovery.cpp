#include "Zorvane/Internal/Discovery/ApplicationDiscovery.hpp"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "Zorvane/Internal/CGInterop/Window.hpp"
#include "Zorvane/Internal/Discovery/SharedDiscovery.hpp"
#include "Zorvane/Internal/Discovery/ZVRunningApplicationState.hpp"
#include "Zorvane/Internal/NaturalOrder.hpp"

namespace zorvane {
namespace {

using Availability = ZVRunningApplication::Availability;

/// Each process once, in ascending order.
std::vector<std::int32_t> windowOwners() {
    std::vector<std::int32_t> owners;
    for (const CGInterop::Window& window : CGInterop::Window::getWindows(CGWindowListOption::all, kCGNullWindowID)) {
        if (window.ownerPID != 0) {
            owners.push_back(window.ownerPID);
        }
    }
    std::ranges::sort(owners);
    owners.erase(std::ranges::unique(owners).begin(), owners.end());
    return owners;
}

bool standsBefore(const std::shared_ptr<ZVRunningApplication>& a, const std::shared_ptr<ZVRunningApplication>& b) {
    const auto order = naturalOrder(a->name().value_or(std::string()), b->name().value_or(std::string()));
    return order != 0 ? order < 0 : a->id() < b->id();
}

}  // namespace

std::shared_ptr<ApplicationDiscovery> ApplicationDiscovery::shared() {
    return sharedDiscovery<ApplicationDiscovery>();
}

ApplicationDiscovery::ApplicationDiscovery() : logger_(Logger::forType<ApplicationDiscovery>()) {}

void ApplicationDiscovery::start() {
    logger_.debug("Starting with inital application");
    poll_ = std::make_shared<AnswerPoll<Answer>>(AnswerPoll<Answer>::Parameters{
        .label = "applications",
        .ask = ask,
        .tell =
            [weak = weak_from_this()](const Answer& answer) {
                if (const auto self = weak.lock()) {
                    self->updateApplications(answer.apps, answer.winAppPIDs);
                }
            },
        .logger = logger_,
    });
    poll_->start();
    nsApplicationsObservation_ =
        Platform::current()->workspace->observeRunningApplications([weak = std::weak_ptr(poll_)] {
            if (const auto poll = weak.lock()) {
                poll->askNow();
            }
        });
}

ApplicationDiscovery::Answer ApplicationDiscovery::ask() {
    return {Platform::current()->workspace->runningApplications(), windowOwners()};
}

void ApplicationDiscovery::updateApplications(const std::vector<NSRunningApplication>& apps,
                                              const std::vector<std::int32_t>& winAppPIDs) {
    logger_.trace("Update applications", [&] {
        return LogMetadata{{"apps", fmt::format("{}", apps.size())},
                           {"winAppPIDs", fmt::format("{}", winAppPIDs.size())}};
    });
    std::set<std::int32_t> running;
    bool anyChanged = false;
    for (const NSRunningApplication& application : apps) {
        if (running.insert(application.processIdentifier).second) {
            anyChanged |= put(application);
        }
    }
    List list;
    for (const auto& [id, application] : allApplications_) {
        if (running.contains(id)) {
            list.push_back(application);
        } else {
            application->state_->availability.update(Availability::notRunning);
        }
    }
    std::ranges::sort(list, standsBefore);
    publish(std::move(list), anyChanged);
}

void ApplicationDiscovery::publish(List list, bool anyChanged) {
    // A process id may come back with another application between two updates.
    if (!anyChanged && list == applications_.value()) {
        logger_.trace("No changes");
        return;
    }
    logger_.info([&] { return fmt::format("Updating {} applications", list.size()); });
    applications_.send(std::move(list));
}

bool ApplicationDiscovery::put(const NSRunningApplication& seen) {
    auto& application = allApplications_[seen.processIdentifier];
    if (!application) {
        application.reset(new ZVRunningApplication(std::unique_ptr<ZVRunningApplication::State>(
            new ZVRunningApplication::State{.id = seen.processIdentifier})));
    }
    ZVRunningApplication::State& state = *application->state_;
    bool changed = state.name.update(seen.localizedName);
    changed |= state.bundleIdentifier.update(seen.bundleIdentifier);
    changed |= state.availability.update(Availability::available);
    return changed;
}

}  // namespace zorvane
