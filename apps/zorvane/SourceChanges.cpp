#include "SourceChanges.hpp"

#include <algorithm>
#include <array>
#include <unordered_map>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "SourceTable.hpp"

namespace zorvane::cli {
namespace {

using JSON = nlohmann::ordered_json;
using Index = std::unordered_map<std::string, const SourceRow*>;

const char* rawValue(SourceChange::Kind kind) {
    constexpr std::array names{"added", "changed", "removed", "reordered"};
    return names[static_cast<std::size_t>(kind)];
}

Index indexed(const SourceRows& rows) {
    Index index;
    for (const SourceRow& row : rows) {
        index.emplace(row.id, &row);
    }
    return index;
}

std::vector<std::string> idsIn(const SourceRows& rows, const Index& others) {
    std::vector<std::string> ids;
    for (const SourceRow& row : rows) {
        if (others.contains(row.id)) {
            ids.push_back(row.id);
        }
    }
    return ids;
}

/// The former values of what is different now.
JSON formerValues(const SourceChange& change) {
    JSON former = JSON::object();
    for (const auto& [name, value] : change.before.properties.items()) {
        if (change.after.properties.at(name) != value) {
            former[name] = value;
        }
    }
    return former;
}

/// What is only another way to tell a source's availability.
bool isWording(const std::string& property) {
    return property == "status" || property == "recoverySuggestion";
}

std::string differencesText(const SourceChange& change) {
    const JSON former = formerValues(change);
    std::vector<std::string> differences;
    for (const auto& [name, value] : former.items()) {
        if (isWording(name)) {
            continue;
        }
        differences.push_back(
            fmt::format("{} {} -> {}", name, cellText(value), cellText(change.after.properties.at(name))));
    }
    return fmt::format("{}", fmt::join(differences, ", "));
}

}  // namespace

std::vector<SourceChange> changesBetween(const SourceRows& before, const SourceRows& after) {
    const Index old = indexed(before);
    const Index fresh = indexed(after);
    std::vector<SourceChange> changes;
    for (const SourceRow& row : before) {
        if (!fresh.contains(row.id)) {
            changes.push_back({SourceChange::Kind::removed, row, {}, {}});
        }
    }
    for (const SourceRow& row : after) {
        if (!old.contains(row.id)) {
            changes.push_back({SourceChange::Kind::added, {}, row, {}});
        }
    }
    for (const SourceRow& row : after) {
        const auto former = old.find(row.id);
        if (former != old.end() && *former->second != row) {
            changes.push_back({SourceChange::Kind::changed, *former->second, row, {}});
        }
    }
    if (idsIn(before, fresh) != idsIn(after, old)) {
        changes.push_back({SourceChange::Kind::reordered, {}, {}, idsIn(after, fresh)});
    }
    return changes;
}

std::string changeText(SourceKind kind, const SourceChange& change) {
    switch (change.kind) {
        case SourceChange::Kind::added:
            return "added " + sourceName(kind, change.after);
        case SourceChange::Kind::changed:
            return fmt::format("changed {}: {}", sourceName(kind, change.after), differencesText(change));
        case SourceChange::Kind::removed:
            return "removed " + sourceName(kind, change.before);
        case SourceChange::Kind::reordered:
            return fmt::format("reordered {}: {}", rawValue(kind), fmt::join(change.order, ", "));
    }
    return {};
}

std::string changeJSON(SourceKind kind, const SourceChange& change) {
    JSON json{{"change", rawValue(change.kind)}, {"kind", rawValue(kind)}};
    if (change.kind == SourceChange::Kind::reordered) {
        json["order"] = change.order;
    } else {
        json["source"] =
            change.kind == SourceChange::Kind::removed ? change.before.properties : change.after.properties;
    }
    if (change.kind == SourceChange::Kind::changed) {
        json["previous"] = formerValues(change);
    }
    return json.dump(-1, ' ', false, JSON::error_handler_t::replace);
}

}  // namespace zorvane::cli
