// Reads what a StreamingJSONWriter wrote, also if it was never closed.
#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>

namespace zorvane {

class JSONReader;

using JSONElementBody = std::function<void(const JSONReader& element)>;

/// Hands over the elements of a JSON array in their order. Only one at a time is in memory, however long the text is.
/// Of a text in the writer's layout that was cut off anywhere, those are the elements whose lines are whole.
///
/// Throws as `JSONReader` does, after the elements ahead of the fault were handed over, what `body` throws, and an
/// `NSError` that calls the text `name` if it can't be read. To tell where a fault is, it reads all of the text again.
void forEachElement(std::istream& text, const std::filesystem::path& name, const JSONElementBody& body);

/// The same for a file.
void forEachElementOfFile(const std::filesystem::path& file, const JSONElementBody& body);

}  // namespace zorvane
