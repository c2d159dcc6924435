// What a window object holds.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Zorvane/Internal/CurrentValueSubject.hpp"
#include "Zorvane/Sources/ZVWindow.hpp"

namespace zorvane {

/// Written by the window discovery only, on the main executor.
struct ZVWindow::State {
    const std::uint32_t id;
    CurrentValueSubject<std::optional<std::string>> title;
    CurrentValueSubject<CGRect> frame;
    CurrentValueSubject<Level> level;
    CurrentValueSubject<std::optional<std::int32_t>> applicationProcessID;
    CurrentValueSubject<std::optional<std::string>> applicationName;
    CurrentValueSubject<bool> insideVisibleFrame;
    CurrentValueSubject<Availability> availability;
};

}  // namespace zorvane
