#include "Zorvane/Internal/SourceTrouble.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace zorvane {
namespace {

/// Why a source can't be there, as the end of a sentence; empty if nothing is known against it.
std::string_view reasonOf(std::string_view availability) {
    if (availability == "lidClosed") {
        return " because MacBook lid is closed.";
    }
    if (availability == "unknownSuspended") {
        return " because it is suspended.";
    }
    if (availability == "notConnected") {
        return " because it is not connected anymore.";
    }
    return {};
}

char lowerCase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

/// Ignores the case of Latin letters. The word is in lower case.
bool holdsWord(std::string name, std::string_view word) {
    std::ranges::transform(name, name.begin(), &lowerCase);
    return name.find(word) != std::string::npos;
}

bool holdsText(const std::optional<std::string>& text) {
    return text && !text->empty();
}

}  // namespace

std::string userMessage(const SourceTrouble& trouble, std::string_view name, std::string_view availability) {
    SourceTrouble::Complaint said = trouble.complaint;
    if (const std::string_view reason = reasonOf(availability); !reason.empty()) {
        said = {cantRecord, trouble.noun, reason, reason};
    }
    return holdsWord(std::string(name), trouble.word)
               ? fmt::format("{} '{}'{}", said.verb, name, said.ending)
               : fmt::format("{} {} '{}'{}", said.verb, said.noun, name, said.endingWithNoun);
}

std::string debugDescription(const SourceTrouble& trouble, std::string_view id, std::string_view availability) {
    return fmt::format("{} {} has availability: {}{}", trouble.typeName, id, availability, trouble.debugEnding);
}

std::string windowMessage(std::uint32_t windowID, const std::optional<std::string>& title,
                          const std::optional<std::string>& applicationName, std::string_view availability) {
    const bool hasTitle = holdsText(title);
    const bool hasName = hasTitle || holdsText(applicationName);
    const std::string label = hasName ? fmt::format("'{}'", hasTitle ? *title : *applicationName) : "window";
    if (availability == "available") {
        return fmt::format("Can't record {} because windowID {} can't be found.", label, windowID);
    }
    const bool isOnlyItsApplication = hasName && !hasTitle;
    const char* reason = availability == "notOnScreen" ? "it is not on screen"
                         : hasTitle                    ? "the window has been closed"
                                                       : "it has been closed";
    return fmt::format("Can't record {}{} because {}.", label, isOnlyItsApplication ? " window" : "", reason);
}

}  // namespace zorvane
