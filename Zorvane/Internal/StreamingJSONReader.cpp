#include "Zorvane/Internal/StreamingJSONReader.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>

#include "Zorvane/Internal/JSONNesting.hpp"
#include "Zorvane/Internal/JSONReader.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

constexpr std::string_view fileHeader = "[\n";

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view whiteSpace = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(whiteSpace);
    return begin == text.npos ? "" : text.substr(begin, text.find_last_not_of(whiteSpace) - begin + 1);
}

[[noreturn]] void failWhole(std::string_view text) {
    JSONDocument(text).root().elements();
    throw NSError::cocoa(NSCoderReadCorruptError, "document: not JSON");
}

/// The text of an array, which is cut into those of its elements; whether these are JSON is left open.
class ArrayText {
  public:
    explicit ArrayText(std::string_view text) : text_(text) {
        if (fileHeader.starts_with(text_)) {
            place_ = text_.size();
        } else {
            enter();
        }
    }

    /// Nothing behind the last element.
    std::optional<std::string_view> next() {
        const std::size_t begin = place_;
        for (; place_ < text_.size(); ++place_) {
            nesting_.advance(text_[place_]);
            if (nesting_.depth() == 0) {
                return last(begin);
            }
            if (text_[place_] == ',' && nesting_.depth() == 1 && !nesting_.isInString()) {
                isFirst_ = false;
                return text_.substr(begin, place_++ - begin);
            }
        }
        return isClosed_ ? std::nullopt : cutOff(begin);
    }

  private:
    void enter() {
        place_ = text_.find('[');
        if (!trimmed(text_).starts_with('[')) {
            failWhole(text_);
        }
        nesting_.advance(text_[place_++]);
    }

    /// The text in front of the bracket that closes the array; nothing if that is empty.
    std::optional<std::string_view> last(std::size_t begin) {
        const std::string_view element = text_.substr(begin, place_ - begin);
        if (text_[place_] != ']' || !trimmed(text_.substr(place_ + 1)).empty()) {
            failWhole(text_);
        }
        place_ = text_.size();
        isClosed_ = true;
        const bool isEmpty = isFirst_ && trimmed(element).empty();
        return isEmpty ? std::nullopt : std::optional(element);
    }

    /// What stands at the end of an array that isn't closed: the last line, if it is whole.
    std::optional<std::string_view> cutOff(std::size_t begin) {
        const std::string_view line = trimmed(text_.substr(begin));
        if (!fileHeader.starts_with(text_.substr(0, 2)) || line.find('\n') != line.npos) {
            failWhole(text_);
        }
        isClosed_ = true;
        const bool isWhole = nesting_.depth() == 1 && line.ends_with('}');
        return isWhole ? std::optional(line) : std::nullopt;
    }

    const std::string_view text_;
    JSONNesting nesting_;
    std::size_t place_ = 0;
    bool isFirst_ = true;
    bool isClosed_ = false;
};

std::string contents(const std::filesystem::path& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error) {
        throw NSError::posix(error.value(), "read", path.native());
    }
    std::string text(size, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (!file.is_open() || file.bad()) {
        throw NSError::posix(errno, "read", path.native());
    }
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

}  // namespace

void forEachElement(std::string_view text, const JSONElementBody& body) {
    ArrayText array(text);
    std::size_t count = 0;
    while (const auto element = array.next()) {
        const JSONDocument document(trimmed(*element), fmt::format("[{}]", count++));
        body(document.root());
    }
}

void forEachElementOfFile(const std::filesystem::path& file, const JSONElementBody& body) {
    forEachElement(contents(file), body);
}

}  // namespace zorvane
