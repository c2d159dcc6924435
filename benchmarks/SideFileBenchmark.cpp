// What an event in a side file costs, against the JSON library's own compact form of the same events.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Zorvane/Internal/JSONWriter.hpp"
#include "Zorvane/Internal/StreamingJSONWriter.hpp"
#include "Zorvane/Internal/ZVInputEventJSON.hpp"

namespace zorvane {
namespace {

constexpr int eventCount = 10'000;

/// A pointer that wanders, with a drag now and then.
const std::vector<ZVInputEvent>& events() {
    static const std::vector<ZVInputEvent> all = [] {
        std::vector<ZVInputEvent> made;
        for (int index = 0; index < eventCount; ++index) {
            const bool isDrag = index % 4 == 0;
            ZVMouseEvent event{.mouseEventType = isDrag ? ZVMouseEventType::dragged : ZVMouseEventType::moved,
                               .time = ZVTime::from(index / 120.0, 0.0),
                               .x = index % 1920 / 1920.0,
                               .y = index % 1080 / 1080.0,
                               .cursorType = ZVCursorType::arrow};
            if (isDrag) {
                event.button = ZVMouseButton::primary;
                event.modifiers = {ZVInputModifier::shift};
            }
            made.emplace_back(event);
        }
        return made;
    }();
    return all;
}

nlohmann::json makeTree(const ZVMouseEvent& event) {
    nlohmann::json tree{
        {"cursorType", rawValue(event.cursorType)},
        {"modifiers", nlohmann::json::array()},
        {"mouseEventType", rawValue(event.mouseEventType)},
        {"time",
         {{"seconds", event.time.seconds()}, {"timescale", event.time.timescale()}, {"value", event.time.value()}}},
        {"type", "mouse"},
        {"x", event.x},
        {"y", event.y},
    };
    if (event.button) {
        tree["button"] = rawValue(*event.button);
    }
    for (const ZVInputModifier modifier : event.modifiers) {
        tree["modifiers"].push_back(rawValue(modifier));
    }
    return tree;
}

nlohmann::json makeTree(const ZVInputEvent& event) {
    return makeTree(std::get<ZVMouseEvent>(event.payload()));
}

const std::vector<nlohmann::json>& trees() {
    static const std::vector<nlohmann::json> all = [] {
        std::vector<nlohmann::json> made;
        for (const ZVInputEvent& event : events()) {
            made.push_back(makeTree(event));
        }
        return made;
    }();
    return all;
}

/// A file's place, which is free at each start.
class Place {
  public:
    Place() {
        std::string name = (std::filesystem::temp_directory_path() / "zorvane-benchmark-XXXXXX").string();
        directory_ = ::mkdtemp(name.data());
    }
    ~Place() { std::filesystem::remove_all(directory_); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    std::filesystem::path file() const { return directory_ / "input-events.json"; }

  private:
    std::filesystem::path directory_;
};

/// So that each round creates the file, and none pays for the last one's end.
void removeUntimed(benchmark::State& state, const std::filesystem::path& file) {
    state.PauseTiming();
    std::filesystem::remove(file);
    state.ResumeTiming();
}

void countEvents(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * eventCount);
}

void writeSideFile(benchmark::State& state) {
    const Place place;
    for (auto _ : state) {
        StreamingJSONWriter writer(place.file());
        for (const ZVInputEvent& event : events()) {
            writer.write(event);
        }
        removeUntimed(state, place.file());
    }
    countEvents(state);
}
BENCHMARK(writeSideFile);

/// The library's tree of each event, dumped to a stream that gathers many lines before it writes them.
void writeSideFileWithTrees(benchmark::State& state) {
    const Place place;
    for (auto _ : state) {
        std::ofstream file(place.file(), std::ios::binary);
        file << "[\n";
        const char* lineStart = "";
        for (const ZVInputEvent& event : events()) {
            file << lineStart << makeTree(event).dump();
            lineStart = ",\n";
        }
        file << "\n]";
        file.close();
        removeUntimed(state, place.file());
    }
    countEvents(state);
}
BENCHMARK(writeSideFileWithTrees);

/// The same kind of file, whole up to the last event at every moment, of trees that are there already.
void writeSideFileOfTrees(benchmark::State& state) {
    const Place place;
    for (auto _ : state) {
        std::ofstream file(place.file(), std::ios::binary);
        std::string lineStart = "[\n";
        for (const nlohmann::json& tree : trees()) {
            file << lineStart + tree.dump() << std::flush;
            lineStart = ",\n";
        }
        file << "\n]";
        file.close();
        removeUntimed(state, place.file());
    }
    countEvents(state);
}
BENCHMARK(writeSideFileOfTrees);

void encodeEvents(benchmark::State& state) {
    std::string line;
    for (auto _ : state) {
        for (const ZVInputEvent& event : events()) {
            line.clear();
            JSONWriter writer(line, JSONWriter::Form::compact, JSONWriter::NonFinite::refused);
            writeJSON(writer, event);
            benchmark::DoNotOptimize(line.data());
        }
    }
    countEvents(state);
}
BENCHMARK(encodeEvents);

/// The library's dump alone, of trees that are there already.
void dumpTrees(benchmark::State& state) {
    for (auto _ : state) {
        for (const nlohmann::json& tree : trees()) {
            benchmark::DoNotOptimize(tree.dump());
        }
    }
    countEvents(state);
}
BENCHMARK(dumpTrees);

}  // namespace
}  // namespace zorvane
