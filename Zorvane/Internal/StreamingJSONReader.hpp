// Reads what a StreamingJSONWriter wrote, also if it was never closed.
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

namespace zorvane {

class JSONReader;

using JSONElementBody = std::function<void(const JSONReader& element)>;

/// Hands over the elements of a JSON array in their order; only one at a time is in memory beside the text. Of a text
/// in the writer's layout that was cut off anywhere, those are the elements whose lines are whole.
///
/// Throws as `JSONReader` does, after the elements ahead of the fault were handed over, and what `body` throws.
void forEachElement(std::string_view text, const JSONElementBody& body);

/// The same for a file. Throws an `NSError` too if it can't be read.
void forEachElementOfFile(const std::filesystem::path& file, const JSONElementBody& body);

}  // namespace zorvane
