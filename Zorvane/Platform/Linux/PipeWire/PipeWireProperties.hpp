// What PipeWire says of its objects, as texts.
#pragma once

#include <charconv>
#include <map>
#include <optional>
#include <string>
#include <string_view>

struct spa_dict;

namespace zorvane {

using PipeWireProperties = std::map<std::string, std::string, std::less<>>;

/// A copy; of nothing if `dictionary` is null.
PipeWireProperties pipeWireProperties(const spa_dict* dictionary);

/// The value as it was set, bytes of any kind; empty if there is none.
const std::string& rawValue(const PipeWireProperties& properties, std::string_view key);

/// The value in a dictionary that may be null, for as long as that lives; empty if there is none.
std::string_view rawValue(const spa_dict* dictionary, const char* key);

/// The value as a whole number, from properties or a dictionary; nothing if it is none.
template <class Number, class Properties>
std::optional<Number> numberOf(const Properties& properties, const char* key) {
    const std::string_view text = rawValue(properties, key);
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && !text.empty() ? std::optional(number) : std::nullopt;
}

/// The value as text for people and for files: valid UTF-8 without control characters, trimmed.
std::string textValue(const PipeWireProperties& properties, std::string_view key);

/// The node's name in a value of the default metadata, as in `{ "name": "alsa_input.pci" }`; empty if there is none.
std::string nameInMetadata(const std::string& value);

}  // namespace zorvane
