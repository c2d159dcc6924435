#include "Zorvane/Internal/JSONWriter.hpp"

#include <cassert>
#include <charconv>
#include <cmath>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Foundation/UTF8.hpp"

namespace zorvane {
namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

bool isPlain(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 0x20 && byte < 0x80 && character != '"' && character != '\\' && character != '/';
}

void appendEscaped(std::string& buffer, char character) {
    constexpr std::string_view hexDigits = "0123456789abcdef";
    switch (character) {
        case '"':
        case '\\':
        case '/':
            buffer += {'\\', character};
            return;
        case '\b':
            buffer += "\\b";
            return;
        case '\f':
            buffer += "\\f";
            return;
        case '\n':
            buffer += "\\n";
            return;
        case '\r':
            buffer += "\\r";
            return;
        case '\t':
            buffer += "\\t";
            return;
        default:
            buffer += "\\u00";
            buffer += hexDigits[static_cast<unsigned char>(character) >> 4U];
            buffer += hexDigits[static_cast<unsigned char>(character) & 0xFU];
    }
}

template <typename Number, typename... Form>
void appendNumber(std::string& buffer, Number value, Form... form) {
    std::array<char, 32> digits;
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value, form...);
    assert(error == std::errc{});
    buffer.append(digits.data(), end);
}

std::chars_format form(double value) {
    const double size = std::abs(value);
    const bool isPlain = size == 0 || (size >= 1e-4 && size < 0x1p53);
    return isPlain ? std::chars_format::fixed : std::chars_format::scientific;
}

std::string_view nonFiniteText(double value) {
    if (std::isnan(value)) {
        return "NaN";
    }
    return value > 0 ? "+infinity" : "-infinity";
}

}  // namespace

void JSONWriter::open(char bracket) {
    beginValue();
    assert(depth_ < maxDepth);
    containers_[depth_++] = {};
    buffer_ += bracket;
}

void JSONWriter::close(char bracket) {
    assert(depth_ > 0 && !followsKey_);
    const bool isEmpty = containers_[--depth_].isEmpty;
    if (form_ == Form::pretty) {
        // An empty container still takes a blank line.
        buffer_ += isEmpty ? "\n" : "";
        breakLine();
    }
    buffer_ += bracket;
}

void JSONWriter::key(std::string_view name) {
    assert(depth_ > 0 && !followsKey_);
    beginItem();
    const std::size_t keyBegin = buffer_.size();
    appendQuoted(name);
    Container& object = containers_[depth_ - 1];
    assert(isAscending(object, keyBegin));
    object.keyBegin = keyBegin;
    object.keyEnd = buffer_.size();
    buffer_ += form_ == Form::pretty ? " : " : ":";
    followsKey_ = true;
}

void JSONWriter::string(std::string_view text) {
    beginValue();
    appendQuoted(text);
}

void JSONWriter::integer(std::int64_t value) {
    beginValue();
    appendNumber(buffer_, value);
}

void JSONWriter::number(double value) {
    if (std::isfinite(value)) {
        beginValue();
        appendNumber(buffer_, value, form(value));
        return;
    }
    if (nonFinite_ == NonFinite::refused) {
        throw NSError::cocoa(NSCoderInvalidValueError,
                             "Unable to write " + std::string(nonFiniteText(value)) + " as a JSON number.");
    }
    string(nonFiniteText(value));
}

void JSONWriter::boolean(bool value) {
    beginValue();
    buffer_ += value ? "true" : "false";
}

void JSONWriter::beginValue() {
    if (followsKey_) {
        followsKey_ = false;
    } else if (depth_ > 0) {
        beginItem();
    }
}

void JSONWriter::beginItem() {
    Container& container = containers_[depth_ - 1];
    buffer_ += container.isEmpty ? "" : ",";
    container.isEmpty = false;
    if (form_ == Form::pretty) {
        breakLine();
    }
}

void JSONWriter::breakLine() {
    buffer_ += '\n';
    buffer_.append(2 * depth_, ' ');
}

void JSONWriter::appendQuoted(std::string_view text) {
    buffer_ += '"';
    while (!text.empty()) {
        std::size_t plain = 0;
        while (plain < text.size() && isPlain(text[plain])) {
            ++plain;
        }
        buffer_.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        if (static_cast<unsigned char>(text.front()) < 0x80) {
            appendEscaped(buffer_, text.front());
            text.remove_prefix(1);
            continue;
        }
        const UTF8Sequence sequence = leadingUTF8Sequence(text);
        buffer_.append(sequence.isValid ? text.substr(0, sequence.length) : replacementCharacter);
        text.remove_prefix(sequence.length);
    }
    buffer_ += '"';
}

bool JSONWriter::isAscending(const Container& object, std::size_t keyBegin) const {
    const std::string_view all = buffer_;
    const auto previous = all.substr(object.keyBegin, object.keyEnd - object.keyBegin);
    // Compared without the closing quotes, so that a key follows its own beginning.
    const auto current = all.substr(keyBegin, all.size() - keyBegin - 1);
    return previous.empty() || previous.substr(0, previous.size() - 1) < current;
}

}  // namespace zorvane
