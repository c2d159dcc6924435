#include "Zorvane/Sources/ZVWindow.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "Zorvane/Internal/Discovery/WindowDiscovery.hpp"
#include "Zorvane/Internal/Discovery/ZVWindowState.hpp"
#include "Zorvane/Internal/Logger.hpp"

namespace zorvane {
namespace {

bool isStatusIndicator(const ZVWindow& window) {
    return window.title() == "StatusIndicator" && window.applicationName() == "Window Server";
}

bool passes(const ZVWindow& window, ZVWindow::FilterOptions options) {
    if (window.availability() != ZVWindow::Availability::available) {
        return false;
    }
    return options == ZVWindow::FilterOptions::onlyOnScreen ||
           (window.level() == ZVWindow::Level::normal && window.applicationProcessID() && window.applicationName() &&
            !isStatusIndicator(window));
}

}  // namespace

ZVWindow::List ZVWindow::windows(FilterOptions options) {
    List windows = filtered(WindowDiscovery::shared()->windows(), options);
    Logger::forType<ZVWindow>().info([&] { return fmt::format("Reporting {} windows.", windows.size()); });
    return windows;
}

ZVAsyncStream<ZVWindow::List> ZVWindow::updates(FilterOptions options) {
    return WindowDiscovery::shared()->updates(options);
}

ZVWindow::List ZVWindow::filtered(const List& windows, FilterOptions by) {
    List passing;
    std::ranges::copy_if(windows, std::back_inserter(passing),
                         [by](const auto& window) { return passes(*window, by); });
    return passing;
}

ZVWindow::ZVWindow(std::unique_ptr<State> state) : state_(std::move(state)) {}
ZVWindow::~ZVWindow() = default;

std::uint32_t ZVWindow::id() const {
    return state_->id;
}

std::optional<std::string> ZVWindow::title() const {
    return state_->title.value();
}

ZVPublisher<std::optional<std::string>> ZVWindow::titlePublisher() const {
    return state_->title.publisher();
}

CGRect ZVWindow::frame() const {
    return state_->frame.value();
}

ZVPublisher<CGRect> ZVWindow::framePublisher() const {
    return state_->frame.publisher();
}

ZVWindow::Level ZVWindow::level() const {
    return state_->level.value();
}

ZVPublisher<ZVWindow::Level> ZVWindow::levelPublisher() const {
    return state_->level.publisher();
}

std::optional<std::int32_t> ZVWindow::applicationProcessID() const {
    return state_->applicationProcessID.value();
}

ZVPublisher<std::optional<std::int32_t>> ZVWindow::applicationProcessIDPublisher() const {
    return state_->applicationProcessID.publisher();
}

std::optional<std::string> ZVWindow::applicationName() const {
    return state_->applicationName.value();
}

ZVPublisher<std::optional<std::string>> ZVWindow::applicationNamePublisher() const {
    return state_->applicationName.publisher();
}

bool ZVWindow::insideVisibleFrame() const {
    return state_->insideVisibleFrame.value();
}

ZVPublisher<bool> ZVWindow::insideVisibleFramePublisher() const {
    return state_->insideVisibleFrame.publisher();
}

ZVWindow::Availability ZVWindow::availability() const {
    return state_->availability.value();
}

ZVPublisher<ZVWindow::Availability> ZVWindow::availabilityPublisher() const {
    return state_->availability.publisher();
}

std::string ZVWindow::debugDescription() const {
    return fmt::format("ZVWindow[id:{} title:{} level:{} frame:{}]", id(), title().value_or("nil"), level().rawValue,
                       zorvane::debugDescription(frame()));
}

std::string_view rawValue(ZVWindow::Availability availability) {
    switch (availability) {
        case ZVWindow::Availability::available:
            return "available";
        case ZVWindow::Availability::notOnScreen:
            return "notOnScreen";
        case ZVWindow::Availability::closed:
            return "closed";
    }
    return {};
}

std::string_view debugDescription(ZVWindow::Availability availability) {
    return rawValue(availability);
}

}  // namespace zorvane
