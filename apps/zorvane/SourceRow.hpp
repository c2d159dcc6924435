// A source as data: what table, JSON and changes are made of.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Zorvane/Zorvane.hpp"

namespace zorvane::cli {

/// One source as it was when it was read.
struct SourceRow {
    std::string id;
    /// Under the names of the library's properties; "id" comes first. What a source doesn't have is null.
    nlohmann::ordered_json properties;

    bool operator==(const SourceRow&) const = default;
};

using SourceRows = std::vector<SourceRow>;

SourceRow rowOf(const ZVDisplay& display);
SourceRow rowOf(const ZVWindow& window);
SourceRow rowOf(const ZVCamera& camera);
SourceRow rowOf(const ZVMicrophone& microphone);
SourceRow rowOf(const ZVRunningApplication& application);
SourceRow rowOf(const ZVAppleDevice& device);

template <class Source>
SourceRows rowsOf(const std::vector<std::shared_ptr<Source>>& sources) {
    SourceRows rows;
    rows.reserve(sources.size());
    for (const auto& source : sources) {
        rows.push_back(rowOf(*source));
    }
    return rows;
}

}  // namespace zorvane::cli
