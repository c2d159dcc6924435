// Follows the brackets of a JSON text without reading its values.
#pragma once

#include <cstdint>

namespace zorvane {

/// Right for every text up to the place where it stops being JSON.
class JSONNesting {
  public:
    /// Takes the text's next character.
    void advance(char character) {
        if (isInString_) {
            advanceInString(character);
        } else if (character == '"') {
            isInString_ = true;
        } else if (character == '[' || character == '{') {
            ++depth_;
        } else if (character == ']' || character == '}') {
            --depth_;
        }
    }

    /// How many brackets are open behind the last character.
    std::int64_t depth() const { return depth_; }
    bool isInString() const { return isInString_; }

  private:
    void advanceInString(char character) {
        if (isEscaped_) {
            isEscaped_ = false;
        } else if (character == '\\') {
            isEscaped_ = true;
        } else if (character == '"') {
            isInString_ = false;
        }
    }

    std::int64_t depth_ = 0;
    bool isInString_ = false;
    bool isEscaped_ = false;
};

}  // namespace zorvane
