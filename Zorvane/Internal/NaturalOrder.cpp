#include "Zorvane/Internal/NaturalOrder.hpp"

#include <algorithm>

namespace zorvane {
namespace {

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

unsigned char folded(char character) {
    const bool isUpperCase = character >= 'A' && character <= 'Z';
    return static_cast<unsigned char>(isUpperCase ? character - 'A' + 'a' : character);
}

/// Takes the number at the beginning off `text`, without its leading zeros.
std::string_view takeNumber(std::string_view& text) {
    const auto end = std::ranges::find_if_not(text, isDigit);
    std::string_view number(text.begin(), end);
    text.remove_prefix(number.size());
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    return number;
}

std::weak_ordering compareNumbers(std::string_view a, std::string_view b) {
    return a.size() != b.size() ? a.size() <=> b.size() : a.compare(b) <=> 0;
}

}  // namespace

std::weak_ordering naturalOrder(std::string_view a, std::string_view b) {
    while (!a.empty() && !b.empty()) {
        std::weak_ordering order = std::weak_ordering::equivalent;
        if (isDigit(a.front()) && isDigit(b.front())) {
            const std::string_view number = takeNumber(a);
            order = compareNumbers(number, takeNumber(b));
        } else {
            order = folded(a.front()) <=> folded(b.front());
            a.remove_prefix(1);
            b.remove_prefix(1);
        }
        if (order != 0) {
            return order;
        }
    }
    return a.size() <=> b.size();
}

}  // namespace zorvane
