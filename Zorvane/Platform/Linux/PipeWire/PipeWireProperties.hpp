// What PipeWire says of its objects, as texts.
#pragma once

#include <map>
#include <string>
#include <string_view>

struct spa_dict;

namespace zorvane {

using PipeWireProperties = std::map<std::string, std::string, std::less<>>;

/// A copy; of nothing if `dictionary` is null.
PipeWireProperties pipeWireProperties(const spa_dict* dictionary);

/// The value as it was set, bytes of any kind; empty if there is none.
const std::string& rawValue(const PipeWireProperties& properties, std::string_view key);

/// The value as text for people and for files: valid UTF-8 without control characters, trimmed.
std::string textValue(const PipeWireProperties& properties, std::string_view key);

/// The node's name in a value of the default metadata, as in `{ "name": "alsa_input.pci" }`; empty if there is none.
std::string nameInMetadata(const std::string& value);

}  // namespace zorvane
