#include "Zorvane/Internal/StreamingJSONReader.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Zorvane/Internal/JSONNesting.hpp"
#include "Zorvane/Internal/JSONReader.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

constexpr std::string_view fileHeader = "[\n";
constexpr std::size_t pieceSize = 64 * 1024;  // bytes

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view whiteSpace = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(whiteSpace);
    return begin == text.npos ? "" : text.substr(begin, text.find_last_not_of(whiteSpace) - begin + 1);
}

/// The text of an array, which is cut into those of its elements; whether these are JSON is left open.
class ArrayText {
  public:
    /// `name` stands in the error of a stream that breaks.
    ArrayText(std::istream& stream, const std::filesystem::path& name) : stream_(stream), name_(name) {
        if (readOn()) {
            isOfWriter_ = fileHeader.starts_with(std::string_view(text_).substr(0, fileHeader.size()));
            enter();
        } else {
            isOfWriter_ = true;  // cut off before its first byte
        }
    }

    /// Valid until the next call. Nothing behind the last element.
    std::optional<std::string_view> next() {
        begin_ = place_;
        do {
            for (; place_ < text_.size(); ++place_) {
                nesting_.advance(text_[place_]);
                if (nesting_.depth() == 0) {
                    return last();
                }
                if (text_[place_] == ',' && nesting_.depth() == 1 && !nesting_.isInString()) {
                    isFirst_ = false;
                    ++place_;
                    return std::string_view(text_).substr(begin_, place_ - 1 - begin_);
                }
            }
        } while (readOn());
        return isClosed_ ? std::nullopt : cutOff();
    }

  private:
    /// Lets go of what lies ahead of `begin_`, and takes a further piece. False at the end of the stream.
    bool readOn() {
        text_.erase(0, begin_);
        place_ -= std::exchange(begin_, 0);
        const std::size_t size = text_.size();
        text_.resize(size + pieceSize);
        stream_.read(text_.data() + size, pieceSize);
        text_.resize(size + static_cast<std::size_t>(stream_.gcount()));
        if (stream_.bad()) {
            throw NSError::posix(errno, "read", name_.native());
        }
        return text_.size() > size;
    }

    void enter() {
        while (trimmed(text_).empty() && readOn()) {
        }
        if (!trimmed(text_).starts_with('[')) {
            failWhole();
        }
        place_ = text_.find('[');
        nesting_.advance(text_[place_++]);
    }

    /// The text in front of the bracket that closes the array; nothing if that is empty.
    std::optional<std::string_view> last() {
        const bool isArray = text_[place_] == ']';
        do {
            if (!isArray || !trimmed(std::string_view(text_).substr(place_ + 1)).empty()) {
                failWhole();
            }
        } while (readOn());
        const std::string_view element = std::string_view(text_).substr(begin_, place_ - begin_);
        place_ = text_.size();
        isClosed_ = true;
        const bool isEmpty = isFirst_ && trimmed(element).empty();
        return isEmpty ? std::nullopt : std::optional(element);
    }

    /// What stands at the end of an array that isn't closed: the last line, if it is whole.
    std::optional<std::string_view> cutOff() {
        const std::string_view line = trimmed(std::string_view(text_).substr(begin_));
        if (!isOfWriter_ || line.find('\n') != line.npos) {
            failWhole();
        }
        isClosed_ = true;
        const bool isWhole = nesting_.depth() == 1 && line.ends_with('}');
        return isWhole ? std::optional(line) : std::nullopt;
    }

    /// Nothing of what was handed over is kept, but the fault is named by its place in the whole text.
    [[noreturn]] void failWhole() {
        stream_.clear();
        stream_.seekg(0);
        const std::string whole{std::istreambuf_iterator<char>(stream_), {}};
        JSONDocument(whole).root().elements();
        throw NSError::cocoa(NSCoderReadCorruptError, "document: not JSON");
    }

    std::istream& stream_;
    const std::filesystem::path& name_;
    std::string text_;       ///< a part of the whole, from the element that was handed over last on
    std::size_t begin_ = 0;  ///< of that element
    std::size_t place_ = 0;  ///< behind all that `nesting_` knows
    JSONNesting nesting_;
    bool isOfWriter_ = false;
    bool isFirst_ = true;
    bool isClosed_ = false;
};

}  // namespace

void forEachElement(std::istream& text, const std::filesystem::path& name, const JSONElementBody& body) {
    ArrayText array(text, name);
    std::size_t count = 0;
    while (const auto element = array.next()) {
        const JSONDocument document(trimmed(*element), fmt::format("[{}]", count++));
        body(document.root());
    }
}

void forEachElementOfFile(const std::filesystem::path& file, const JSONElementBody& body) {
    std::ifstream text(file, std::ios::binary);
    if (!text.is_open()) {
        throw NSError::posix(errno, "read", file.native());
    }
    forEachElement(text, file, body);
}

}  // namespace zorvane
