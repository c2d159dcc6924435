#include "Zorvane/Platform/Linux/X11/XText.hpp"

#include <algorithm>

#include "Zorvane/Platform/Foundation/UTF8.hpp"

namespace zorvane {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

/// Collects characters until there are enough of them.
class Letters {
  public:
    bool isFull() const { return count_ == longestXText; }
    std::string take() { return std::move(text_); }

    void addUTF8(std::string_view bytes) {
        while (!bytes.empty() && !isFull()) {
            const auto next = leadingUTF8Sequence(bytes);
            add(next.isValid ? bytes.substr(0, next.length) : replacement);
            bytes.remove_prefix(next.length);
        }
    }

    void addLatin1(char letter) {
        const auto code = static_cast<unsigned char>(letter);
        if (code < 0x80) {
            add({&letter, 1});
            return;
        }
        const char sequence[] = {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
        add({sequence, sizeof sequence});
    }

    void addUnknown() { add(replacement); }

  private:
    void add(std::string_view character) {
        text_ += character;
        ++count_;
    }

    std::string text_;
    std::size_t count_ = 0;
};

/// Compound text is Latin-1 until it switches.
class CompoundText {
  public:
    explicit CompoundText(std::string_view bytes) : rest_(bytes) {}

    std::string decode() {
        while (!rest_.empty() && !letters_.isFull()) {
            rest_.front() == '\x1B' ? takeSwitch() : takeLetter();
        }
        return letters_.take();
    }

  private:
    void takeLetter() {
        const bool isInUpperHalf = (rest_.front() & 0x80) != 0;
        const bool isKnown = isInUpperHalf ? upperIsLatin1_ : lowerIsASCII_ || rest_.front() <= ' ';
        isKnown ? letters_.addLatin1(rest_.front()) : letters_.addUnknown();
        rest_.remove_prefix(1);
    }

    /// Escape, intermediate bytes from 0x20 to 0x2F, one final byte.
    void takeSwitch() {
        const auto last = std::find_if(rest_.begin() + 1, rest_.end(), [](char c) { return c < 0x20 || c > 0x2F; });
        const auto length = static_cast<std::size_t>(last - rest_.begin()) + (last == rest_.end() ? 0 : 1);
        const auto sequence = rest_.substr(1, length - 1);
        rest_.remove_prefix(length);
        if (sequence == "%G") {
            takeUTF8();
        } else if (sequence.starts_with("%/")) {
            skipExtendedSegment();
        } else if (sequence.starts_with("(") || sequence.starts_with("$(")) {
            lowerIsASCII_ = sequence == "(B";
        } else if (sequence.starts_with("-") || sequence.starts_with(")") || sequence.starts_with("$)")) {
            upperIsLatin1_ = sequence == "-A";
        }
    }

    void takeUTF8() {
        constexpr std::string_view end = "\x1B%@";
        const auto length = std::min(rest_.find(end), rest_.size());
        letters_.addUTF8(rest_.substr(0, length));
        rest_.remove_prefix(std::min(length + end.size(), rest_.size()));
    }

    /// Its length stands in two bytes that have the upper bit set.
    void skipExtendedSegment() {
        if (rest_.size() < 2) {
            rest_ = {};
            return;
        }
        const std::size_t length = (rest_[0] & 0x7FU) * 128 + (rest_[1] & 0x7FU);
        rest_.remove_prefix(std::min(2 + length, rest_.size()));
        letters_.addUnknown();
    }

    std::string_view rest_;
    Letters letters_;
    bool lowerIsASCII_ = true;
    bool upperIsLatin1_ = true;
};

}  // namespace

std::string decodeXText(std::string_view bytes, XTextEncoding encoding) {
    bytes = bytes.substr(0, bytes.find('\0'));
    if (encoding == XTextEncoding::compoundText) {
        return CompoundText(bytes).decode();
    }
    Letters letters;
    if (encoding == XTextEncoding::utf8) {
        letters.addUTF8(bytes);
        return letters.take();
    }
    for (const char letter : bytes.substr(0, longestXText)) {
        letters.addLatin1(letter);
    }
    return letters.take();
}

}  // namespace zorvane
