// How the presence of windows stands in JSON.
#pragma once

#include "Zorvane/ZVWindowPresence.hpp"

namespace zorvane {

class JSONReader;
class JSONWriter;

void writeJSON(JSONWriter& writer, const ZVWindowPresence& presence);

/// Throws an `UnknownDiscriminator` for a "type" that isn't listed, and else as `JSONReader` does.
ZVWindowPresence readWindowPresence(const JSONReader& reader);

}  // namespace zorvane
