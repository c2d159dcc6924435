// Writes a JSON array to a file, element by element, while a recording runs.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"

namespace zorvane {

class JSONWriter;

/// One line for each element, so that a file which was never closed is whole up to its last line; memory doesn't grow
/// with the file. Any thread; elements stand in the order of the calls.
class StreamingJSONWriter {
  public:
    /// Creates the file. Throws an internal `ZVError` if there is one already, which stays as it is, or if it can't be
    /// created; what the operating system says as an `NSError`.
    explicit StreamingJSONWriter(const std::filesystem::path& fileURL);
    StreamingJSONWriter(const StreamingJSONWriter&) = delete;
    StreamingJSONWriter& operator=(const StreamingJSONWriter&) = delete;
    /// Leaves a file that wasn't closed as it is.
    ~StreamingJSONWriter();

    /// Adds one element, with one write to the operating system. If the element has no JSON form, or the write fails,
    /// this throws an `NSError` and the file is as if the call had not been made. After `close` it throws an internal
    /// `ZVError`.
    template <class Element>
    void write(const Element& element) {
        writeElement([&element](JSONWriter& writer) { writeJSON(writer, element); });
    }

    /// Ends the array, waits until the file is on the disk, and closes it. Once, after the last element. Throws an
    /// `NSError`, and leaves out what was still to be done.
    void close();

  private:
    void writeElement(const std::function<void(JSONWriter&)>& encode);

    class File;
    const DispatchQueue queue_;
    const std::unique_ptr<File> file_;
};

}  // namespace zorvane
