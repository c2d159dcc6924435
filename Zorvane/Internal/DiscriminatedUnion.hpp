// One of several records in JSON: one flat object with the record's keys and the key "type", which says which it is.
#pragma once

#include <exception>
#include <string_view>

#include "Zorvane/Internal/JSONFields.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/UnknownDiscriminator.hpp"

namespace zorvane {

inline constexpr std::string_view discriminatorKey = "type";

template <class Record, RawRepresentable TypeValue>
void encodeValue(JSONWriter& writer, const Record& record, TypeValue type) {
    writer.beginObject();
    JSONFieldWriter fields(writer, discriminatorKey, rawValueOf(type));
    JSONFields<Record>::visit(fields, record);
    fields.finish();
    writer.endObject();
}

/// Throws an `UnknownDiscriminator` for a text that is no `TypeValue`, and else as `JSONReader` does.
template <RawRepresentable TypeValue>
TypeValue decodeType(const JSONReader& object) {
    try {
        return readRawValue<TypeValue>(object.member(discriminatorKey));
    } catch (const NSError&) {
        // If there is no text, this throws the error to report.
        const std::string value = object.member(discriminatorKey).string();
        throw UnknownDiscriminator(std::current_exception(), std::string(discriminatorKey), value);
    }
}

/// Reads the record from the same object, whatever its type says.
template <class Record>
Record decodeSingleValueContainer(const JSONReader& object) {
    Record record;
    JSONFieldReader fields(object);
    JSONFields<Record>::visit(fields, record);
    return record;
}

}  // namespace zorvane
