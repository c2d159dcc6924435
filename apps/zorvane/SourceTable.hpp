// Sources for people: a table for each kind, and a line for each change.
#pragma once

#include <string>

#include "SourceKind.hpp"
#include "SourceRow.hpp"

namespace zorvane::cli {

/// A heading, then a line for each source in columns; "none" if there is none. What is longer than a column may be is
/// cut, and characters that could play tricks on a terminal are replaced.
std::string sourceTable(SourceKind kind, const SourceRows& rows);

/// "window 41943046 "Notes"": what a line calls one source.
std::string sourceName(SourceKind kind, const SourceRow& row);

/// One property as it stands in a table.
std::string cellText(const nlohmann::ordered_json& value);

}  // namespace zorvane::cli
