#include "Zorvane/Internal/JSONWriter.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <random>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

using Form = JSONWriter::Form;

std::string written(Form form, auto&& write) {
    std::string buffer;
    JSONWriter writer(buffer, form);
    write(writer);
    return buffer;
}

std::string jsonString(std::string_view text) {
    return written(Form::compact, [&](JSONWriter& writer) { writer.string(text); });
}

std::string number(double value) {
    return written(Form::compact, [&](JSONWriter& writer) { writer.number(value); });
}

void writeNested(JSONWriter& writer) {
    writer.beginObject();
    writer.key("a");
    writer.beginArray();
    writer.integer(1);
    writer.beginObject();
    writer.endObject();
    writer.endArray();
    writer.key("ab");
    writer.boolean(true);
    writer.endObject();
}

TEST(JSONWriter, NestsWithoutWhiteSpaceInCompactForm) {
    EXPECT_EQ(written(Form::compact, &writeNested), R"({"a":[1,{}],"ab":true})");
}

TEST(JSONWriter, GivesEveryItemALineInPrettyForm) {
    EXPECT_EQ(written(Form::pretty, &writeNested), "{\n  \"a\" : [\n    1,\n    {\n\n    }\n  ],\n  \"ab\" : true\n}");
}

TEST(JSONWriter, AppendsToWhatTheBufferHolds) {
    std::string buffer = ",\n";
    JSONWriter(buffer).integer(-5);
    EXPECT_EQ(buffer, ",\n-5");
}

TEST(JSONWriter, EscapesWhatJSONCannotHold) {
    EXPECT_EQ(jsonString("\"\\/"), R"("\"\\\/")");
    EXPECT_EQ(jsonString(std::string_view("\b\f\n\r\t\0\x1f\x7f", 8)), "\"\\b\\f\\n\\r\\t\\u0000\\u001f\x7f\"");
    EXPECT_EQ(jsonString("Größe 漢 😀"), "\"Größe 漢 😀\"");
}

TEST(JSONWriter, ReplacesInvalidUTF8) {
    EXPECT_EQ(jsonString("a\xFFz"), "\"a\uFFFDz\"");
    EXPECT_EQ(jsonString("\xE6\xBC"), "\"\uFFFD\"") << "a title cut inside a character";
    EXPECT_EQ(jsonString("\xE6\xBC/"), "\"\uFFFD\\/\"") << "what follows is not swallowed";
    EXPECT_EQ(jsonString("\xC0\xAF"), "\"\uFFFD\uFFFD\"") << "overlong slash";
    EXPECT_EQ(jsonString("\xED\xA0\x80"), "\"\uFFFD\uFFFD\uFFFD\"") << "surrogate";
    EXPECT_EQ(jsonString("\xF4\x90\x80\x80"), "\"\uFFFD\uFFFD\uFFFD\uFFFD\"") << "beyond the last character";
}

TEST(JSONWriter, WritesValidJSONForAnyBytes) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> bytes(0, 255);
    std::uniform_int_distribution<int> lengths(0, 12);
    for (int round = 0; round < 20'000; ++round) {
        std::string text(static_cast<std::size_t>(lengths(random)), '\0');
        for (char& character : text) {
            character = static_cast<char>(bytes(random));
        }
        ASSERT_TRUE(nlohmann::json::accept(jsonString(text))) << jsonString(text);
    }
}

TEST(JSONWriter, WritesTheFewestDigitsThatReadBack) {
    EXPECT_EQ(number(0.1), "0.1");
    EXPECT_EQ(number(-0.0), "-0");
    EXPECT_EQ(number(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(number(0.0001), "0.0001");
    EXPECT_EQ(number(-0.00001), "-1e-05");
    EXPECT_EQ(number(100'000), "100000");
    EXPECT_EQ(number(9'007'199'254'740'991), "9007199254740991") << "the last odd number";
    EXPECT_EQ(number(1e16), "1e+16");
    EXPECT_EQ(number(5e-324), "5e-324");
    EXPECT_EQ(number(std::numeric_limits<double>::max()), "1.7976931348623157e+308");
    EXPECT_EQ(written(Form::compact, [](JSONWriter& w) { w.integer(std::numeric_limits<std::int64_t>::min()); }),
              "-9223372036854775808");
}

TEST(JSONWriter, WritesNonFiniteNumbersAsTextOrRefusesThem) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(number(infinity), "\"+infinity\"");
    EXPECT_EQ(number(-infinity), "\"-infinity\"");
    EXPECT_EQ(number(std::numeric_limits<double>::quiet_NaN()), "\"NaN\"");

    std::string buffer;
    JSONWriter strict(buffer, Form::compact, JSONWriter::NonFinite::refused);
    EXPECT_THROW(strict.number(infinity), NSError);
}

TEST(JSONWriter, AllocatesNothingBeyondItsBuffer) {
    std::string buffer;
    buffer.reserve(256);
    const auto* const before = buffer.data();
    JSONWriter writer(buffer, Form::pretty);
    writeNested(writer);
    EXPECT_EQ(buffer.data(), before);
}

#ifndef NDEBUG
TEST(JSONWriterDeathTest, StopsOnKeysOutOfOrder) {
    EXPECT_DEATH(written(Form::compact,
                         [](JSONWriter& writer) {
                             writer.beginObject();
                             writer.key("b");
                             writer.integer(1);
                             writer.key("a");
                         }),
                 "isAscending");
}
#endif

}  // namespace
}  // namespace zorvane
