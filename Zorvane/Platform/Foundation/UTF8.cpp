#include "Zorvane/Platform/Foundation/UTF8.hpp"

namespace zorvane {
namespace {

/// What a lead byte allows: how many bytes in all, and the range of the second one.
struct LeadByte {
    std::size_t length;
    unsigned char secondLowest = 0x80;
    unsigned char secondHighest = 0xBF;
};

LeadByte classify(unsigned char byte) {
    if (byte < 0x80) {
        return {1};
    }
    if (byte >= 0xC2 && byte <= 0xDF) {
        return {2};
    }
    switch (byte) {
        case 0xE0:
            return {3, 0xA0, 0xBF};
        case 0xED:
            return {3, 0x80, 0x9F};
        case 0xF0:
            return {4, 0x90, 0xBF};
        case 0xF4:
            return {4, 0x80, 0x8F};
        default:
            break;
    }
    if (byte >= 0xE1 && byte <= 0xEF) {
        return {3};
    }
    return byte >= 0xF1 && byte <= 0xF3 ? LeadByte{4} : LeadByte{0};
}

}  // namespace

UTF8Sequence leadingUTF8Sequence(std::string_view text) {
    const LeadByte lead = classify(static_cast<unsigned char>(text.front()));
    if (lead.length == 0) {
        return {1, false};
    }
    for (std::size_t index = 1; index < lead.length; ++index) {
        const unsigned char lowest = index == 1 ? lead.secondLowest : 0x80;
        const unsigned char highest = index == 1 ? lead.secondHighest : 0xBF;
        const auto byte = index < text.size() ? static_cast<unsigned char>(text[index]) : 0;
        if (byte < lowest || byte > highest) {
            return {index, false};
        }
    }
    return {lead.length, true};
}

std::string repairedUTF8(std::string_view text) {
    std::string repaired;
    while (!text.empty()) {
        const auto next = leadingUTF8Sequence(text);
        repaired += next.isValid ? text.substr(0, next.length) : "\xEF\xBF\xBD";
        text.remove_prefix(next.length);
    }
    return repaired;
}

}  // namespace zorvane
