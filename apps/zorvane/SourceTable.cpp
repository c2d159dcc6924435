#include "SourceTable.hpp"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include <fmt/format.h>

#include "Figures.hpp"

namespace zorvane::cli {
namespace {

struct Column {
    const char* heading;
    const char* property;
};

using Columns = std::vector<Column>;

/// What is told of one kind of source.
struct Kind {
    const char* heading;
    const char* one;
    const char* nameProperty;
    Columns columns;
};

const Kind& describe(SourceKind kind) {
    static const Columns device{{"ID", "id"},
                                {"NAME", "localizedName"},
                                {"MANUFACTURER", "manufacturer"},
                                {"MODEL", "modelID"},
                                {"STATUS", "status"}};
    static const std::array<Kind, allSourceKinds.size()> kinds{{
        {"Displays",
         "display",
         "localizedName",
         {{"ID", "id"}, {"NAME", "localizedName"}, {"FRAME", "frame"}, {"MAIN", "isMain"}, {"STATUS", "status"}}},
        {"Windows",
         "window",
         "title",
         {{"ID", "id"},
          {"TITLE", "title"},
          {"APPLICATION", "applicationName"},
          {"PROCESS", "applicationProcessID"},
          {"FRAME", "frame"},
          {"STATUS", "availability"}}},
        {"Cameras", "camera", "localizedName", device},
        {"Microphones", "microphone", "localizedName", device},
        {"Applications", "application", "name", {{"ID", "id"}, {"NAME", "name"}, {"IDENTIFIER", "bundleIdentifier"}}},
        {"Devices",
         "device",
         "localizedName",
         {{"ID", "id"}, {"NAME", "localizedName"}, {"MODEL", "modelID"}, {"STATUS", "status"}}},
    }};
    return kinds[static_cast<std::size_t>(kind)];
}

/// Characters of a column at most: a title may be as long as a book.
constexpr std::size_t widestCell = 60;

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// The number of characters in UTF-8 text.
std::size_t widthOf(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(text, [](char byte) { return !continuesCharacter(byte); }));
}

std::string cut(std::string text) {
    if (widthOf(text) <= widestCell) {
        return text;
    }
    std::size_t characters = 0;
    const auto end =
        std::ranges::find_if(text, [&](char byte) { return !continuesCharacter(byte) && ++characters == widestCell; });
    return std::string(text.begin(), end) + "…";
}

std::string cell(const SourceRow& row, const Column& column) {
    const bool isID = std::string_view(column.property) == "id";
    return isID ? printable(row.id) : cut(cellText(row.properties.at(column.property)));
}

void addLine(std::string& table, const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) {
    std::string line = " ";
    for (std::size_t index = 0; index < cells.size(); index++) {
        line += " " + cells[index] + std::string(widths[index] - widthOf(cells[index]) + 1, ' ');
    }
    table += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
}

}  // namespace

std::string cellText(const nlohmann::ordered_json& value) {
    if (value.is_null()) {
        return "-";
    }
    if (value.is_string()) {
        const auto text = printable(value.get<std::string>());
        return text.empty() ? "-" : text;
    }
    if (value.is_boolean()) {
        return value.get<bool>() ? "yes" : "no";
    }
    if (value.is_object()) {
        return fmt::format("{}x{} at ({}, {})", value["width"].get<double>(), value["height"].get<double>(),
                           value["x"].get<double>(), value["y"].get<double>());
    }
    return value.dump();
}

std::string sourceTable(SourceKind kind, const SourceRows& rows) {
    const Kind& described = describe(kind);
    std::string table = fmt::format("{}\n", described.heading);
    if (rows.empty()) {
        return table + "  none\n";
    }
    std::vector<std::vector<std::string>> lines(1);
    for (const Column& column : described.columns) {
        lines.front().emplace_back(column.heading);
    }
    for (const SourceRow& row : rows) {
        auto& line = lines.emplace_back();
        std::ranges::transform(described.columns, std::back_inserter(line),
                               [&](const Column& column) { return cell(row, column); });
    }
    std::vector<std::size_t> widths(described.columns.size());
    for (const auto& line : lines) {
        for (std::size_t index = 0; index < line.size(); index++) {
            widths[index] = std::max(widths[index], widthOf(line[index]));
        }
    }
    for (const auto& line : lines) {
        addLine(table, line, widths);
    }
    return table;
}

std::string sourceName(SourceKind kind, const SourceRow& row) {
    const Kind& described = describe(kind);
    const auto& name = row.properties.at(described.nameProperty);
    const std::string quoted = name.is_string() ? fmt::format(" \"{}\"", cut(printable(name.get<std::string>()))) : "";
    return fmt::format("{} {}{}", described.one, printable(row.id), quoted);
}

}  // namespace zorvane::cli
