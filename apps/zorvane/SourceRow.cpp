#include "SourceRow.hpp"

#include <optional>

#include <fmt/format.h>

namespace zorvane::cli {
namespace {

using JSON = nlohmann::ordered_json;

template <class Value>
JSON orNull(const std::optional<Value>& value) {
    return value ? JSON(*value) : JSON(nullptr);
}

JSON frameJSON(const CGRect& frame) {
    return {{"x", frame.origin.x}, {"y", frame.origin.y}, {"width", frame.size.width}, {"height", frame.size.height}};
}

/// Cameras and microphones say the same of themselves.
template <class Device>
JSON deviceJSON(const Device& device) {
    return {{"id", device.id()},
            {"localizedName", device.localizedName()},
            {"modelID", device.modelID()},
            {"manufacturer", device.manufacturer()},
            {"availability", rawValue(device.availability())},
            {"status", status(device.availability())},
            {"recoverySuggestion", recoverySuggestion(device.availability())}};
}

}  // namespace

SourceRow rowOf(const ZVDisplay& display) {
    return {fmt::to_string(display.id()),
            {{"id", display.id()},
             {"displayID", display.displayID()},
             {"localizedName", display.localizedName()},
             {"isMain", display.isMain()},
             {"isBuiltIn", display.isBuiltIn()},
             {"frame", frameJSON(display.frame())},
             {"availability", rawValue(display.availability())},
             {"status", status(display.availability())},
             {"recoverySuggestion", recoverySuggestion(display.availability())}}};
}

SourceRow rowOf(const ZVWindow& window) {
    return {fmt::to_string(window.id()),
            {{"id", window.id()},
             {"title", orNull(window.title())},
             {"applicationName", orNull(window.applicationName())},
             {"applicationProcessID", orNull(window.applicationProcessID())},
             {"frame", frameJSON(window.frame())},
             {"level", window.level().rawValue},
             {"insideVisibleFrame", window.insideVisibleFrame()},
             {"availability", rawValue(window.availability())}}};
}

SourceRow rowOf(const ZVCamera& camera) {
    SourceRow row{camera.id(), deviceJSON(camera)};
    row.properties["isDeskView"] = camera.isDeskView();
    return row;
}

SourceRow rowOf(const ZVMicrophone& microphone) {
    return {microphone.id(), deviceJSON(microphone)};
}

SourceRow rowOf(const ZVRunningApplication& application) {
    return {fmt::to_string(application.id()),
            {{"id", application.id()},
             {"name", orNull(application.name())},
             {"bundleIdentifier", orNull(application.bundleIdentifier())},
             {"availability", rawValue(application.availability())}}};
}

SourceRow rowOf(const ZVAppleDevice& device) {
    return {device.id(),
            {{"id", device.id()},
             {"localizedName", device.localizedName()},
             {"modelID", orNull(device.modelID())},
             {"availability", rawValue(device.availability())},
             {"status", status(device.availability())},
             {"recoverySuggestion", recoverySuggestion(device.availability())}}};
}

}  // namespace zorvane::cli
