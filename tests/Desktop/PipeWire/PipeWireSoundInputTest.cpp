// A node that hears what it was wired to, and nothing else.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <set>

#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegAudioConverter.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSocket.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundGraph.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundInput.hpp"
#include "tests/Desktop/PipeWire/DeviceWatcher.hpp"
#include "tests/Support/PipeWireTestClient.hpp"
#include "tests/Support/PipeWireTestMicrophone.hpp"
#include "tests/Support/PrivatePipeWire.hpp"
#include "tests/Support/SoundCollector.hpp"

namespace zorvane {
namespace {

/// An input, and a graph whose scenes say what it is wired to.
class WiredInput {
  public:
    using Choice = std::function<PipeWireSoundSources(const PipeWireSoundScene& scene)>;

    WiredInput(const PipeWireSoundInput::Settings& settings, Choice choice)
        : session_(std::make_shared<PipeWireSession>()), state_(std::make_shared<State>(session_, settings)) {
        graph_ = std::make_shared<PipeWireSoundGraph>([state = state_, choice = std::move(choice)](const auto& scene) {
            const std::lock_guard lock(state->mutex);
            state->input.setSources(choice(scene));
            state->scene = scene;
            state->changed.notify_all();
        });
        state_->input.start();
        session_->add(graph_);
    }
    ~WiredInput() {
        session_->remove(graph_);
        state_->input.stop();
    }

    const SoundCollector& sound() const { return state_->sound; }

    bool waitForScene(const std::function<bool(const PipeWireSoundScene&)>& condition) {
        std::unique_lock lock(state_->mutex);
        return state_->changed.wait_for(lock, patience, [&] { return condition(state_->scene); });
    }

  private:
    struct State {
        State(std::shared_ptr<PipeWireSession> session, const PipeWireSoundInput::Settings& settings)
            : input(std::move(session), settings, std::make_shared<FFmpegAudioConverting>(),
                    [this](const CMSampleBuffer& sample) { sound.add(sample); }) {}

        SoundCollector sound;
        PipeWireSoundInput input;
        std::mutex mutex;
        std::condition_variable changed;
        PipeWireSoundScene scene;
    };

    const std::shared_ptr<PipeWireSession> session_;
    const std::shared_ptr<State> state_;
    std::shared_ptr<PipeWireSoundGraph> graph_;
};

/// Wires the first outputs of nodes to channels, in the order of the names.
WiredInput::Choice wires(std::vector<std::pair<std::string, std::uint32_t>> nodes) {
    return [nodes = std::move(nodes)](const PipeWireSoundScene& scene) {
        PipeWireSoundSources sources;
        for (const auto& [name, channel] : nodes) {
            if (const PipeWireSoundNode* node = scene.node(name); node && !node->ports.empty()) {
                sources.wires.insert({.outputPort = node->ports.front().serial, .input = channel});
            }
        }
        return sources;
    };
}

/// Who is heard by the node of this name.
std::vector<std::string> heardBy(const PipeWireSoundScene& scene, const std::string& name) {
    std::vector<std::string> names;
    const PipeWireSoundNode* hearer = scene.node(name);
    for (const PipeWireSoundLink& link : scene.links) {
        const PipeWireSoundNode* node = scene.node(link.outputNode);
        if (hearer && node && link.inputNode == hearer->id) {
            names.push_back(node->name);
        }
    }
    return names;
}

constexpr AVAudioFormat mono{.commonFormat = AVAudioCommonFormat::float32, .sampleRate = 48000, .channelCount = 1};

class PipeWireSoundInputTest : public testing::Test {
  protected:
    PipeWireSoundInputTest() { service_.startAndWait(); }

    PrivatePipeWire service_;
};

TEST_F(PipeWireSoundInputTest, ConvertsToTheRateThatIsWanted) {
    const PipeWireTestMicrophone microphone({.name = "mic"});
    AVAudioFormat output = mono;
    output.sampleRate = 44100;
    WiredInput input({.name = "ears", .output = output}, wires({{"mic", 0}}));
    ASSERT_TRUE(input.sound().waitForFrames(66150));
    EXPECT_LT(errorOfTime(input.sound().samples()), tolerableErrorOfTime);
}

TEST_F(PipeWireSoundInputTest, MixesWhatIsWiredToOneChannel) {
    const PipeWireTestMicrophone one({.name = "one"});
    const PipeWireTestMicrophone two({.name = "two"});
    AVAudioFormat output = mono;
    output.channelCount = 2;
    WiredInput input({.name = "ears", .output = output}, wires({{"one", 0}, {"two", 0}, {"one", 1}}));
    ASSERT_TRUE(input.waitForScene([](const auto& scene) { return heardBy(scene, "ears").size() == 2; }));
    ASSERT_TRUE(input.sound().waitForMoreFrames(24000));
    SoundCollector::Samples samples = input.sound().samples();
    samples.erase(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2));
    const double mixed = shareOfFrames(samples, [](double, const float* channels) {
        return std::abs(channels[0] - 2 * channels[1]) < 1e-3;  // both say the same
    });
    EXPECT_GT(mixed, 0.5);
}

TEST_F(PipeWireSoundInputTest, SilenceComesBeforeSoundAfterItAndWithoutPipeWire) {
    WiredInput input({.name = "ears", .output = mono, .idle = PipeWireSoundInput::Idle::silence}, wires({{"mic", 0}}));
    ASSERT_TRUE(input.sound().waitForFrames(4800)) << "nothing is there";
    for (int round = 0; round < 3; ++round) {
        const PipeWireTestMicrophone microphone({.name = "mic"});
        ASSERT_TRUE(input.waitForScene([](const auto& scene) { return heardBy(scene, "ears").size() == 1; }));
        ASSERT_TRUE(input.sound().waitForMoreFrames(9600));
    }
    service_.kill();
    ASSERT_TRUE(input.sound().waitForMoreFrames(9600)) << "PipeWire is gone";

    const SoundCollector::Samples samples = input.sound().samples();
    double loudest = 0;
    forEachFrame(samples, [&](double, const float* channels) { loudest = std::max<double>(loudest, channels[0]); });
    EXPECT_GT(loudest, 0);
    const auto breaks = breaksIn(samples);
    EXPECT_TRUE(std::ranges::all_of(breaks, [](std::int64_t frames) { return frames > 0; })) << "never back in time";
}

TEST_F(PipeWireSoundInputTest, ALinkOfAnotherProgramIsTakenAway) {
    const PipeWireTestMicrophone chosen({.name = "chosen"});
    const PipeWireTestMicrophone other({.name = "other"});
    WiredInput input({.name = "ears", .output = mono}, wires({{"chosen", 0}}));
    ASSERT_TRUE(input.waitForScene([](const auto& scene) { return heardBy(scene, "ears").size() == 1; }));
    PipeWireTestClient client;
    client.link("other:output_1", "ears:input_1");
    EXPECT_TRUE(input.waitForScene(
        [](const auto& scene) { return heardBy(scene, "ears") == std::vector<std::string>{"chosen"}; }));
    EXPECT_TRUE(input.sound().waitForMoreFrames(4800)) << "the chosen one goes on";
    EXPECT_LT(errorOfTime(input.sound().samples()), tolerableErrorOfTime);
}

TEST(PipeWireSessionManagerTest, LeavesAnInputAloneWhoseSourceIsGone) {
    if (pipeWireStatus().reachability != PipeWireStatus::Reachability::reachable) {
        GTEST_SKIP() << "there is no desktop with a PipeWire and its session manager";
    }
    std::set<std::string> heard;
    WiredInput input({.name = "ears", .output = mono}, [&heard](const PipeWireSoundScene& scene) {
        const auto names = heardBy(scene, "ears");
        heard.insert(names.begin(), names.end());
        return wires({{"chosen", 0}})(scene);
    });
    PipeWireTestClient client;
    for (int round = 0; round < 3; ++round) {
        auto chosen = std::make_unique<PipeWireTestMicrophone>(PipeWireTestMicrophone::Settings{.name = "chosen"});
        client.setDefault("default.configured.audio.source", R"({ "name": "chosen" })");
        ASSERT_TRUE(input.waitForScene([](const auto& scene) {
            return scene.defaultSourceName == "chosen" && heardBy(scene, "ears").size() == 1;
        }));
        ASSERT_TRUE(input.sound().waitForMoreFrames(4800));
        chosen.reset();
        const std::string other = "other" + std::to_string(round);
        const PipeWireTestMicrophone another({.name = other});
        client.setDefault("default.configured.audio.source", R"({ "name": ")" + other + "\" }");
        // When the manager has chosen the other one as the default, it has also looked for new sources for all streams.
        ASSERT_TRUE(input.waitForScene(
            [&](const auto& scene) { return scene.defaultSourceName == other && heardBy(scene, "ears").empty(); }));
    }
    input.waitForScene([&](const auto&) {
        EXPECT_THAT(heard, testing::ElementsAre("chosen"));
        return true;
    });
}

TEST_F(PipeWireSoundInputTest, ASceneTellsOfNodesPortsProcessesAndDefaults) {
    PipeWireTestClient client;
    const PipeWireTestMicrophone microphone(
        {.name = "mic", .channelCount = 2, .latency = std::chrono::milliseconds(30)});
    client.addNode({{"node.name", "speakers"},
                    {"media.class", "Audio/Sink"},
                    {"client.api", "pipewire-pulse"},
                    {"application.process.id", "5000001"},
                    {"audio.position", "[ FL FR ]"},
                    {"adapter.auto-port-config", "{ mode = dsp monitor = true position = preserve }"}});
    client.setDefault("default.audio.sink", R"({ "name": "speakers" })");
    const auto addStream = [&client](std::map<std::string, std::string> properties) {
        properties["application.process.id"] = std::to_string(getppid());
        properties["media.class"] = "Audio/Sink";
        client.addNode(properties);
    };
    addStream({{"node.name", "plain"}});
    addStream({{"node.name", "sandboxed"}, {"client.api", "pipewire-pulse"}, {"application.process.binary", "else"}});
    WiredInput input({.name = "ears", .output = mono}, wires({}));
    ASSERT_TRUE(input.waitForScene([](const auto& scene) {
        const auto* speakers = scene.node("speakers");
        return scene.defaultSinkName == "speakers" && speakers && speakers->ports.size() == 4 && scene.node("plain") &&
               scene.node("sandboxed") && scene.node("mic") && scene.node("mic")->ports.size() == 2;
    }));
    input.waitForScene([](const PipeWireSoundScene& scene) {
        using enum PipeWireSoundPort::Kind;
        EXPECT_EQ(scene.node("mic")->processID, getpid()) << "its client's";
        EXPECT_EQ(scene.node("mic")->ports[1].latency.at(0, 1), std::chrono::milliseconds(30));
        EXPECT_EQ(scene.node("speakers")->processID, 5000001) << "as PulseAudio's client says";
        EXPECT_EQ(scene.node("plain")->processID, getpid()) << "whatever it says";
        EXPECT_EQ(scene.node("sandboxed")->processID, 0) << "the number is another one's";
        const auto& ports = scene.node("speakers")->ports;
        EXPECT_EQ(std::ranges::count(ports, monitor, &PipeWireSoundPort::kind), 2);
        EXPECT_EQ(std::ranges::count(ports, std::string("FR"), &PipeWireSoundPort::channel), 2);
        return true;
    });
    service_.kill();
    EXPECT_TRUE(input.waitForScene([](const auto& scene) { return !scene.isConnected && scene.nodes.empty(); }));
}

}  // namespace
}  // namespace zorvane
