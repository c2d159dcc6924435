// Writes the exact byte form of the library's JSON files straight from records, with no tree between.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zorvane {

/// Appends one JSON value to a buffer of the caller's.
///
/// The caller names the keys of an object in ascending order (asserted in debug builds), each followed by exactly one
/// value. Slashes are escaped; numbers have the fewest digits that read back as the same double, without an
/// exponent from 0.0001 to 2^53; bytes that aren't UTF-8 become U+FFFD, so text from the outside never fails. A writer
/// allocates nothing but what the buffer's growth takes, so a reused buffer makes writing free of allocation.
class JSONWriter {
  public:
    enum class Form {
        compact,  ///< no white space at all
        pretty,   ///< a line for each key and element, indented by two spaces, " : " behind a key
    };
    /// What becomes of a number that JSON can't hold.
    enum class NonFinite {
        asText,   ///< the strings "+infinity", "-infinity" and "NaN"
        refused,  ///< an `NSError` is thrown; what was appended so far stays in the buffer
    };

    /// Nesting beyond this is a bug of the caller.
    static constexpr std::size_t maxDepth = 16;

    /// The buffer must outlive the writer. What it holds stays in front.
    explicit JSONWriter(std::string& buffer, Form form = Form::compact, NonFinite nonFinite = NonFinite::asText)
        : buffer_(buffer), form_(form), nonFinite_(nonFinite) {}

    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    void endArray() { close(']'); }
    void key(std::string_view name);

    void string(std::string_view text);
    void integer(std::int64_t value);
    void number(double value);
    void boolean(bool value);

  private:
    struct Container {
        bool isEmpty = true;
        // Where the last key stands in the buffer, to check the order.
        std::size_t keyBegin = 0;
        std::size_t keyEnd = 0;
    };

    void open(char bracket);
    void close(char bracket);
    void beginValue();
    void beginItem();
    void breakLine();
    void appendQuoted(std::string_view text);
    bool isAscending(const Container& object, std::size_t keyBegin) const;

    std::string& buffer_;
    const Form form_;
    const NonFinite nonFinite_;
    std::array<Container, maxDepth> containers_{};
    std::size_t depth_ = 0;
    bool followsKey_ = false;
};

/// A value on one line, by its own `writeJSON`. Throws an `NSError` for a number that isn't finite.
template <class Value>
std::string compactJSON(const Value& value) {
    std::string json;
    JSONWriter writer(json, JSONWriter::Form::compact, JSONWriter::NonFinite::refused);
    writeJSON(writer, value);
    return json;
}

}  // namespace zorvane
