// How input events stand in JSON.
#pragma once

#include "Zorvane/ZVInputEvent.hpp"

namespace zorvane {

class JSONReader;
class JSONWriter;

void writeJSON(JSONWriter& writer, const ZVInputEvent& event);

/// Throws an `UnknownDiscriminator` for a "type" that isn't listed, and else as `JSONReader` does.
ZVInputEvent readInputEvent(const JSONReader& reader);

}  // namespace zorvane
