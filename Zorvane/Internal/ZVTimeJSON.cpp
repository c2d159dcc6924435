#include "Zorvane/Internal/ZVTimeJSON.hpp"

#include "Zorvane/Internal/JSONReader.hpp"
#include "Zorvane/Internal/JSONWriter.hpp"

namespace zorvane {

void writeJSON(JSONWriter& writer, const ZVTime& time) {
    writer.beginObject();
    writer.key("seconds");
    writer.number(time.seconds());
    writer.key("timescale");
    writer.integer(time.timescale());
    writer.key("value");
    writer.integer(time.value());
    writer.endObject();
}

void writeJSON(JSONWriter& writer, const ZVTimeRange& range) {
    writer.beginObject();
    writer.key("begin");
    writeJSON(writer, range.begin);
    writer.key("duration");
    writeJSON(writer, range.duration);
    writer.endObject();
}

ZVTime readTime(const JSONReader& reader) {
    return {reader.member("seconds").number(), reader.member("value").integer<std::int64_t>(),
            reader.member("timescale").integer<std::int32_t>()};
}

ZVTimeRange readTimeRange(const JSONReader& reader) {
    return {readTime(reader.member("begin")), readTime(reader.member("duration"))};
}

}  // namespace zorvane
