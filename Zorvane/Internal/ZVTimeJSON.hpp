// How the public time values stand in JSON, for the records that hold them.
#pragma once

#include "Zorvane/ZVTime.hpp"

namespace zorvane {

class JSONReader;
class JSONWriter;

void writeJSON(JSONWriter& writer, const ZVTime& time);
void writeJSON(JSONWriter& writer, const ZVTimeRange& range);

/// All keys are required. Throws as `JSONReader` does.
ZVTime readTime(const JSONReader& reader);
ZVTimeRange readTimeRange(const JSONReader& reader);

}  // namespace zorvane
