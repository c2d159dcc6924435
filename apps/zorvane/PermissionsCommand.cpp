#include "PermissionsCommand.hpp"

#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Figures.hpp"
#include "WriteAll.hpp"
#include "Zorvane/ZVAuthorizationStatus.hpp"

namespace zorvane::cli {
namespace {

using JSON = nlohmann::ordered_json;

struct Row {
    ZVPermission permission;
    ZVPermissionReport report;
};

std::vector<Row> readRows() {
    std::vector<Row> rows;
    for (const ZVPermission permission : allPermissions) {
        rows.push_back({permission, ZVAuthorizationStatus::report(permission)});
    }
    return rows;
}

std::string_view nameOf(ZVPermission permission) {
    switch (permission) {
        case ZVPermission::screenRecording:
            return "screen";
        case ZVPermission::systemAudioRecording:
            return "system audio";
        case ZVPermission::microphone:
            return "microphones";
        case ZVPermission::camera:
            return "cameras";
        case ZVPermission::inputMonitoring:
            return "mouse and keyboard";
        case ZVPermission::accessibilityControl:
            return "control of input";
    }
    return "";
}

std::string_view answerOf(AVAuthorizationStatus status) {
    switch (status) {
        case AVAuthorizationStatus::authorized:
            return "yes";
        case AVAuthorizationStatus::notDetermined:
            return "ask";
        case AVAuthorizationStatus::restricted:
        case AVAuthorizationStatus::denied:
            return "no";
    }
    return "";
}

std::string textOf(const std::vector<Row>& rows) {
    constexpr auto line = "{:<20}{:<9}{}\n";
    std::string text = fmt::format(line, "MAY RECORD", "ALLOWED", "WHY, AND WHAT TO DO");
    for (const Row& row : rows) {
        text +=
            fmt::format(line, nameOf(row.permission), answerOf(row.report.status), printable(row.report.explanation));
        if (!row.report.remedy.empty()) {
            text += fmt::format(line, "", "", printable(row.report.remedy));
        }
    }
    return text;
}

std::string jsonOf(const std::vector<Row>& rows) {
    JSON permissions = JSON::array();
    for (const Row& row : rows) {
        permissions.push_back({{"permission", zorvane::rawValue(row.permission)},
                               {"status", zorvane::rawValue(row.report.status)},
                               {"explanation", row.report.explanation},
                               {"remedy", row.report.remedy.empty() ? JSON(nullptr) : JSON(row.report.remedy)}});
    }
    const JSON json{{"permissions", std::move(permissions)}};
    return json.dump(2, ' ', false, JSON::error_handler_t::replace) + "\n";
}

}  // namespace

ExitStatus permissions(const PermissionsOptions& options) {
    ZVPlatform::use(options.platform);
    const std::vector<Row> rows = readRows();
    printResult(options.json ? jsonOf(rows) : textOf(rows));
    return ExitStatus::complete;
}

}  // namespace zorvane::cli
