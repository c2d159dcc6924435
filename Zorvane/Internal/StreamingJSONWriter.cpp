#include "Zorvane/Internal/StreamingJSONWriter.hpp"

#include <cerrno>
#include <cstdint>
#include <span>
#include <string_view>

#include "Zorvane/Internal/JSONWriter.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Foundation/OutputFile.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

constexpr std::string_view fileHeader = "[\n";
constexpr std::string_view lineEnding = ",\n";
constexpr std::string_view fileFooter = "\n]";

std::unique_ptr<OutputFile> create(const std::filesystem::path& url) {
    try {
        return makeOutputFile(url);
    } catch (const NSError& error) {
        const bool exists = error.code() == EEXIST;
        throw ZVError::internalError((exists ? "File already exists at " : "Unable to create file ") + url.native());
    }
}

}  // namespace

/// The file, and what goes into it next. On the writer's queue.
class StreamingJSONWriter::File {
  public:
    explicit File(const std::filesystem::path& url) : handle_(create(url)) {}

    void writeHeader() { append(fileHeader); }

    void writeElement(const std::function<void(JSONWriter&)>& encode) {
        requireOpen();
        line_ = lineStart_;
        JSONWriter writer(line_, JSONWriter::Form::compact, JSONWriter::NonFinite::refused);
        encode(writer);
        append(line_);
        lineStart_ = lineEnding;
    }

    void close() {
        requireOpen();
        isOpen_ = false;
        append(fileFooter);
        handle_->sync();
        handle_->close();
    }

  private:
    void requireOpen() const {
        if (!isOpen_) {
            throw ZVError::internalError("The file of a StreamingJSONWriter is closed.");
        }
    }

    void append(std::string_view bytes) {
        try {
            handle_->append(std::as_bytes(std::span(bytes)));
            size_ += bytes.size();
        } catch (const NSError&) {
            takeBack();
            throw;
        }
    }

    /// A part of a line may have been written.
    void takeBack() {
        try {
            handle_->truncate(size_);
        } catch (const NSError&) {
            // The next line is written over it, and whoever reads the file passes over a last line that isn't whole.
        }
    }

    const std::unique_ptr<OutputFile> handle_;
    std::uint64_t size_ = 0;
    std::string_view lineStart_;
    std::string line_;  // Kept, so that its memory serves all lines.
    bool isOpen_ = true;
};

StreamingJSONWriter::StreamingJSONWriter(const std::filesystem::path& fileURL)
    : queue_(DispatchQueue::serial("StreamingJSONWriter")), file_(std::make_unique<File>(fileURL)) {
    queue_.sync([this] { file_->writeHeader(); });
}

StreamingJSONWriter::~StreamingJSONWriter() = default;

void StreamingJSONWriter::writeElement(const std::function<void(JSONWriter&)>& encode) {
    queue_.sync([&] { file_->writeElement(encode); });
}

void StreamingJSONWriter::close() {
    queue_.sync([this] { file_->close(); });
}

}  // namespace zorvane
