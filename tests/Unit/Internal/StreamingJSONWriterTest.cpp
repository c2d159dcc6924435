#include "Zorvane/Internal/StreamingJSONWriter.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

#include "Zorvane/Internal/JSONWriter.hpp"
#include "Zorvane/Internal/ZVInputEventJSON.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/ZVError.hpp"
#include "tests/Support/AllocationCounter.hpp"
#include "tests/Support/FileSizeLimit.hpp"
#include "tests/Support/TemporaryDirectory.hpp"

namespace zorvane {

/// An element whose JSON is a text, or what can't be written if it is no number.
struct Note {
    std::string text;
    double number = 0;
};

static void writeJSON(JSONWriter& writer, const Note& note) {
    writer.beginObject();
    writer.key("note");
    writer.string(note.text);
    writer.key("number");
    writer.number(note.number);
    writer.endObject();
}

namespace {

using testing::AllocationCounter;
using testing::FileSizeLimit;

class StreamingJSONWriterTest : public ::testing::Test {
  protected:
    std::string content() const {
        std::ifstream stream(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    TemporaryDirectory directory_;
    const std::filesystem::path path_ = directory_.path() / "input-events.json";
};

std::string debugText(auto&& action) {
    try {
        action();
    } catch (const ZVError& error) {
        return error.errorGroup();
    }
    return "no ZVError";
}

TEST_F(StreamingJSONWriterTest, GivesEachElementALineAndTheArrayItsBrackets) {
    const std::vector<std::string> files{
        "[\n\n]",
        "[\n{\"note\":\"a\\/b\",\"number\":0}\n]",
        "[\n{\"note\":\"a\\/b\",\"number\":0},\n{\"note\":\"a\\/b\",\"number\":0}\n]",
    };
    for (std::size_t count = 0; count < files.size(); ++count) {
        StreamingJSONWriter writer(path_);
        for (std::size_t index = 0; index < count; ++index) {
            writer.write(Note{"a/b"});
        }
        EXPECT_EQ(content(), files[count].substr(0, files[count].size() - 2)) << "every line is there before the end";
        writer.close();
        EXPECT_EQ(content(), files[count]);
        EXPECT_EQ(nlohmann::json::parse(content()).size(), count);
        std::filesystem::remove(path_);
    }
}

TEST_F(StreamingJSONWriterTest, NeverTouchesAFileThatExists) {
    std::ofstream(path_) << "mine";
    EXPECT_EQ(debugText([this] { StreamingJSONWriter writer(path_); }),
              "internalError: File already exists at " + path_.string());
    EXPECT_EQ(content(), "mine");
    const auto nowhere = directory_.path() / "no" / "file";
    EXPECT_EQ(debugText([&] { StreamingJSONWriter writer(nowhere); }),
              "internalError: Unable to create file " + nowhere.string());
}

TEST_F(StreamingJSONWriterTest, AnElementThatFailsLeavesTheFileAsItWas) {
    StreamingJSONWriter writer(path_);
    EXPECT_THROW(writer.write(Note{"first", std::nan("")}), NSError);
    EXPECT_EQ(content(), "[\n");
    writer.write(Note{"second"});
    const std::string before = content();
    EXPECT_THROW(writer.write(Note{"third", INFINITY}), NSError);
    {
        const FileSizeLimit limit(before.size() + 5);
        EXPECT_THROW(writer.write(Note{"a line that has no room"}), NSError);
    }
    EXPECT_EQ(content(), before) << "what was written of the line is taken back";
    writer.write(Note{"last"});
    writer.close();
    EXPECT_EQ(content(), "[\n{\"note\":\"second\",\"number\":0},\n{\"note\":\"last\",\"number\":0}\n]");
}

TEST_F(StreamingJSONWriterTest, RefusesElementsOnceItIsClosed) {
    StreamingJSONWriter writer(path_);
    writer.close();
    EXPECT_THROW(writer.write(Note{"late"}), ZVError);
    EXPECT_THROW(writer.close(), ZVError);
    EXPECT_EQ(content(), "[\n\n]");
}

TEST_F(StreamingJSONWriterTest, TakesElementsOfManyThreadsWhole) {
    constexpr int threadCount = 4;
    constexpr int elementCount = 250;
    StreamingJSONWriter writer(path_);
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < threadCount; ++thread) {
            threads.emplace_back([&writer, thread] {
                for (int index = 0; index < elementCount; ++index) {
                    writer.write(Note{std::to_string(thread), static_cast<double>(index)});
                }
            });
        }
    }
    writer.close();
    std::array<int, threadCount> next{};
    for (const auto& element : nlohmann::json::parse(content())) {
        int& index = next.at(std::stoul(element["note"].get<std::string>()));
        EXPECT_EQ(element["number"], index++) << "a thread's elements keep their order";
    }
    EXPECT_TRUE(std::ranges::all_of(next, [](int count) { return count == elementCount; }));
}

TEST_F(StreamingJSONWriterTest, AllocatesNothingForAnElement) {
    if (!AllocationCounter::isAvailable()) {
        GTEST_SKIP() << "allocations can't be counted here";
    }
    ZVMouseEvent click{.button = ZVMouseButton::primary};
    click.modifiers = {ZVInputModifier::shift};
    const ZVInputEvent event(click);
    StreamingJSONWriter writer(path_);
    writer.write(event);
    writer.write(event);
    const AllocationCounter allocations;
    for (int index = 0; index < 100; ++index) {
        writer.write(event);
    }
    EXPECT_EQ(allocations.count(), 0U);
}

}  // namespace
}  // namespace zorvane
