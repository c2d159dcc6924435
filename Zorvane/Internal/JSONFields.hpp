// The fields of a record, told once for both directions of JSON.
//
//     template <>
//     struct JSONFields<Point> {
//         static void visit(auto& fields, auto& point) {
//             fields("x", point.x);
//             fields("y", point.y);
//         }
//     };
//
// A field is a number, a boolean, a text, an enumeration with raw values, a set of such, a time, or one of these that
// may be absent: its key is then left out, and a null is read as absent too.
#pragma once

#include <concepts>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "Zorvane/Internal/JSONReader.hpp"
#include "Zorvane/Internal/JSONWriter.hpp"
#include "Zorvane/Internal/RawValues.hpp"
#include "Zorvane/Internal/ZVTimeJSON.hpp"

namespace zorvane {

/// Specialised for each record, as above; keys in ascending order.
template <class Record>
struct JSONFields;

/// Writes fields into an object of the writer's that is open, and one more of the caller's where its key belongs.
class JSONFieldWriter {
  public:
    JSONFieldWriter(JSONWriter& writer, std::string_view extraKey, std::string_view extraValue)
        : writer_(writer), extraKey_(extraKey), extraValue_(extraValue) {}

    template <class Value>
    void operator()(std::string_view key, const Value& value) {
        if (!hasExtra_ && extraKey_ < key) {
            writeExtra();
        }
        writer_.key(key);
        write(value);
    }

    template <class Value>
    void operator()(std::string_view key, const std::optional<Value>& value) {
        if (value) {
            (*this)(key, *value);
        }
    }

    /// After the last field.
    void finish() {
        if (!hasExtra_) {
            writeExtra();
        }
    }

  private:
    void writeExtra() {
        hasExtra_ = true;
        writer_.key(extraKey_);
        writer_.string(extraValue_);
    }

    void write(bool value) { writer_.boolean(value); }
    void write(double value) { writer_.number(value); }
    void write(std::integral auto value) { writer_.integer(value); }
    void write(const std::string& value) { writer_.string(value); }
    void write(const ZVTime& value) { writeJSON(writer_, value); }
    void write(RawRepresentable auto value) { writer_.string(rawValueOf(value)); }

    template <RawRepresentable Enum>
    void write(const std::set<Enum>& values) {
        writer_.beginArray();
        for (const Enum value : values) {
            write(value);
        }
        writer_.endArray();
    }

    JSONWriter& writer_;
    const std::string_view extraKey_;
    const std::string_view extraValue_;
    bool hasExtra_ = false;
};

/// Reads fields from an object. Throws as `JSONReader` does.
class JSONFieldReader {
  public:
    explicit JSONFieldReader(const JSONReader& object) : object_(object) {}

    template <class Value>
    void operator()(std::string_view key, Value& value) const {
        read(object_.member(key), value);
    }

    template <class Value>
    void operator()(std::string_view key, std::optional<Value>& value) const {
        if (const auto member = object_.optionalMember(key)) {
            read(*member, value.emplace());
        }
    }

  private:
    static void read(const JSONReader& reader, bool& value) { value = reader.boolean(); }
    static void read(const JSONReader& reader, double& value) { value = reader.number(); }
    static void read(const JSONReader& reader, std::string& value) { value = reader.string(); }
    static void read(const JSONReader& reader, ZVTime& value) { value = readTime(reader); }

    template <std::integral Integer>
    static void read(const JSONReader& reader, Integer& value) {
        value = reader.integer<Integer>();
    }

    template <RawRepresentable Enum>
    static void read(const JSONReader& reader, Enum& value) {
        value = readRawValue<Enum>(reader);
    }

    template <RawRepresentable Enum>
    static void read(const JSONReader& reader, std::set<Enum>& values) {
        for (const JSONReader& element : reader.elements()) {
            values.insert(readRawValue<Enum>(element));
        }
    }

    const JSONReader& object_;
};

}  // namespace zorvane
