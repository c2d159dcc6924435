#include "Zorvane/Internal/StreamingJSONReader.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Zorvane/Internal/JSONReader.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/UnknownDiscriminator.hpp"
#include "Zorvane/ZVInputEvent.hpp"
#include "Zorvane/ZVWindowPresence.hpp"
#include "tests/Support/TemporaryDirectory.hpp"

namespace zorvane {
namespace {

using Texts = std::vector<std::string>;

/// The values of "a" in all elements.
Texts texts(const std::string& array) {
    Texts texts;
    std::istringstream stream(array);
    forEachElement(stream, "array", [&](const JSONReader& element) { texts.push_back(element.member("a").string()); });
    return texts;
}

std::string problem(auto&& action) {
    try {
        action();
    } catch (const NSError& error) {
        return error.localizedDescription();
    } catch (const UnknownDiscriminator& error) {
        return error.debugDescription();
    }
    return "nothing thrown";
}

TEST(StreamingJSONReader, ReadsAnArrayInAnyLayout) {
    EXPECT_EQ(texts(R"([{"a":"1"},{"a":"2"}])"), (Texts{"1", "2"}));
    EXPECT_EQ(texts(" [\r\n\t{ \"b\" : [{}, [1]],\n \"a\" : \"x]},[{\\\\\\\"\" }\n,{\"a\":\"\"} ]\n"),
              (Texts{"x]},[{\\\"", ""}));
    EXPECT_EQ(texts("[]"), Texts{});
    EXPECT_EQ(texts("[\n\n]"), Texts{});
}

TEST(StreamingJSONReader, ReadsTheWholeLinesOfAFileCutAnywhere) {
    const std::string one = R"({"a":"1, [{\"","b":[]})";
    const std::string two = R"({"a":"2"})";
    const std::string file = "[\n" + one + ",\n" + two + "\n]";
    const std::size_t endOfOne = 2 + one.size();
    const std::size_t endOfTwo = endOfOne + 2 + two.size();
    for (std::size_t size = 0; size <= file.size(); ++size) {
        const std::size_t count = (size >= endOfOne ? 1 : 0) + (size >= endOfTwo ? 1 : 0);
        EXPECT_EQ(texts(file.substr(0, size)).size(), count) << "cut at byte " << size;
    }
    EXPECT_EQ(texts("[\n" + two + ",\n" + std::string(64, '\0')), Texts{"2"}) << "what a power cut may leave";
}

TEST(StreamingJSONReader, ReadsWhatIsLongerThanItReadsAtOnce) {
    Texts expected;
    std::string file(200'000, ' ');
    for (std::size_t index = 0; index < 4000; ++index) {
        expected.push_back(std::string(index % 7 * index % 1000, 'x'));
        file += (index == 0 ? "[{\"a\":\"" : ",\n{\"a\":\"") + expected.back() + "\"}";
    }
    expected.push_back(std::string(300'000, ','));
    file += ",{\"a\":\"" + expected.back() + "\"}" + std::string(200'000, ' ');
    EXPECT_EQ(texts(file + "]" + std::string(200'000, '\n')), expected);
    EXPECT_EQ(problem([&] { texts(file + "]" + std::string(200'000, '\n') + "]"); }),
              fmt::format("document: not JSON at byte {}", file.size() + 200'002));
    const std::string begun = file.substr(200'000 + 1);
    EXPECT_EQ(texts("[\n" + begun), expected) << "cut off behind the last element";
    expected.pop_back();
    EXPECT_EQ(texts("[\n" + begun.substr(0, begun.size() - 300'000)), expected) << "cut off within it";
}

TEST(StreamingJSONReader, RefusesWhatIsDamagedElsewhere) {
    const auto read = [](const std::string& text) { return problem([text] { texts(text); }); };
    EXPECT_EQ(read("[\n{\"a\":\"1\"},\n{\"a\"},\n{\"a\":\"3\"}\n]"), "document[1]: not JSON at byte 5");
    EXPECT_EQ(read("[\n{\"a\":\"1\"},\n{\"b\":1},"), "document[1]: missing key \"a\"");
    EXPECT_EQ(read("[\n{\"a\":\"1\",\n{\"a\":\"2\"}"), "document: not JSON at byte 13") << "not in the last line";
    EXPECT_EQ(read("[\n{\"a\":\"1},\n{\"a\":\"2\"}\n]"), "document: not JSON at byte 12");
    EXPECT_EQ(read("[{\"a\":\"1\"}"), "document: not JSON at byte 11") << "not a layout of which lines are known";
    EXPECT_EQ(read("[{\"a\":\"1\"},]"), "document[1]: not JSON at byte 1");
    EXPECT_EQ(read("[,]"), "document[0]: not JSON at byte 1");
    EXPECT_EQ(read("[}"), "document: not JSON at byte 2");
    EXPECT_EQ(read("[]]"), "document: not JSON at byte 3");
    EXPECT_EQ(read("{}"), "document: not an array");
    EXPECT_EQ(read("]"), "document: not JSON at byte 1");
    EXPECT_EQ(read({"[{}\0x]", 6}), "document[0]: not JSON at byte 3");
    EXPECT_EQ(read("[\xEF\xBB\xBF{}]"), "document[0]: begins with a byte order mark");
    EXPECT_EQ(read("\xEF\xBB\xBF[]"), "document: begins with a byte order mark");
    EXPECT_EQ(read("[{\"a\":\"\xFF\"}]"), "document[0]: not JSON at byte 7");
}

TEST(StreamingJSONReader, RefusesDepthWithoutFollowingIt) {
    const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    EXPECT_NO_THROW(JSONDocument{nested(512)});
    const std::string tooDeep = "document: nests deeper than 512 levels";
    EXPECT_EQ(problem([&] { JSONDocument{nested(513)}; }), tooDeep);
    EXPECT_EQ(problem([] { JSONDocument{std::string(1'000'000, '[')}; }), tooDeep);
    EXPECT_EQ(problem([] { texts(std::string(1'000'000, '[')); }), tooDeep);
    EXPECT_EQ(problem([&] { texts("[" + nested(1'000'000) + "]"); }), "document[0]: nests deeper than 512 levels");
    EXPECT_NO_THROW(JSONDocument{'"' + std::string(1000, '[') + '"'});
}

TEST(StreamingJSONReader, SideFilesNameTheElementThatIsWrong) {
    const TemporaryDirectory directory;
    const auto file = directory.path() / "side.json";
    const std::string absent = R"({"time":{"seconds":0,"timescale":1,"value":0},"type":"absent"})";
    std::ofstream(file) << "[\n" << absent << ",\n" << absent << ",\n{\"type\":\"pres";
    EXPECT_EQ(ZVWindowPresence::read(file).size(), 2U);
    EXPECT_EQ(problem([&] { ZVInputEvent::read(file); }), "Unknown .type 'absent' decoded at path: [0].type");
    std::ofstream(file) << "[\n" << absent << ",\n{\"time\":{\"seconds\":\"1\"},\"type\":\"absent\"}\n]";
    EXPECT_EQ(problem([&] { ZVWindowPresence::read(file); }), "document[1].time.seconds: not a number");
    EXPECT_EQ(problem([&] { ZVInputEvent::read(directory.path()); }),
              "Unable to read \"" + directory.path().string() + "\": Is a directory.");
    EXPECT_EQ(problem([] { ZVInputEvent::read("/no/file"); }),
              "Unable to read \"/no/file\": No such file or directory.");
}

}  // namespace
}  // namespace zorvane
