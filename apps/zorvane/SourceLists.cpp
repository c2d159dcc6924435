#include "SourceLists.hpp"

#include <utility>

namespace zorvane::cli {
namespace {

using Listed = std::function<void(SourceRows rows)>;

constexpr auto includingDeskView = true;

template <class Source>
ZVTask<> follow(ZVAsyncStream<std::vector<std::shared_ptr<Source>>> updates, Listed listed) {
    while (auto sources = co_await updates.next()) {
        listed(rowsOf(*sources));
    }
}

}  // namespace

SourceRows currentSources(SourceKind kind) {
    switch (kind) {
        case SourceKind::displays:
            return rowsOf(ZVDisplay::displays());
        case SourceKind::windows:
            return rowsOf(ZVWindow::windows());
        case SourceKind::cameras:
            return rowsOf(ZVCamera::cameras(includingDeskView));
        case SourceKind::microphones:
            return rowsOf(ZVMicrophone::microphones());
        case SourceKind::applications:
            return rowsOf(ZVRunningApplication::applications());
        case SourceKind::devices:
            return rowsOf(ZVAppleDevice::appleDevices().get());
    }
    return {};
}

ZVTask<> followSources(SourceKind kind, Listed listed) {
    switch (kind) {
        case SourceKind::displays:
            co_await follow(ZVDisplay::updates(), std::move(listed));
            break;
        case SourceKind::windows:
            co_await follow(ZVWindow::updates(), std::move(listed));
            break;
        case SourceKind::cameras:
            co_await follow(ZVCamera::updates(includingDeskView), std::move(listed));
            break;
        case SourceKind::microphones:
            co_await follow(ZVMicrophone::updates(), std::move(listed));
            break;
        case SourceKind::applications:
            co_await follow(ZVRunningApplication::updates(), std::move(listed));
            break;
        case SourceKind::devices:
            co_await follow(ZVAppleDevice::updates(), std::move(listed));
            break;
    }
}

}  // namespace zorvane::cli
