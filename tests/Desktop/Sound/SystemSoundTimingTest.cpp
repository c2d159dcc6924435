#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <ostream>
#include <thread>

#include "tests/Desktop/Sound/SystemSoundFixture.hpp"
#include "tests/Support/PipeWireTestSink.hpp"

namespace zorvane {
namespace {

using std::chrono::nanoseconds;
using namespace std::chrono_literals;

/// Single frames at known moments, five in a second.
class ClickPlayer {
  public:
    explicit ClickPlayer(const std::string& sink) {
        SoundPlayer::Settings settings;
        settings.properties = {{"client.api", "pipewire-pulse"},
                               {"application.process.id", std::to_string(oneProcess)},
                               {"target.object", sink}};
        player_ = std::make_unique<SoundPlayer>([this](nanoseconds heardAt) { return sampleAt(heardAt); }, settings);
        player_->awaitPlaying();
    }
    ~ClickPlayer() { player_.reset(); }

    /// In seconds on the host clock, as the player's stream was told.
    std::vector<double> heardAt() const {
        std::vector<double> times;
        for (std::size_t index = 0; index < count_; ++index) {
            times.push_back(std::chrono::duration<double>(clicks_[index]).count());
        }
        return times;
    }

  private:
    float sampleAt(nanoseconds heardAt) {
        const std::size_t count = count_;
        if (count == clicks_.size() || (count > 0 && heardAt - clicks_[count - 1] < 200ms)) {
            return 0;
        }
        clicks_[count] = heardAt;
        count_ = count + 1;
        return 0.9F;
    }

    std::array<nanoseconds, 200> clicks_{};
    std::atomic<std::size_t> count_ = 0;
    std::unique_ptr<SoundPlayer> player_;
};

struct Path {
    const char* name;
    const char* sink;
    SCContentFilterKind kind;
    std::vector<std::int32_t> processes;
};

void PrintTo(const Path& path, std::ostream* out) {
    *out << path.name;
}

class SystemSoundTimingTest : public ::testing::TestWithParam<Path> {
  protected:
    struct Errors {
        std::vector<double> found;  ///< what the sound says of each click against the truth, in ms, rising
        std::size_t lost = 0;       ///< clicks without any sound within 90 ms, as of a cycle that PipeWire missed
    };

    Errors errors(const std::vector<double>& clicks, const HeardSound& heard) {
        Errors errors;
        for (const double click : clicks) {
            if (click > heard.begin() + 0.1 && click < heard.end() - 0.1) {
                const auto found = heard.firstAbove(0.3, click - 0.09);
                if (found && *found < click + 0.09) {
                    errors.found.push_back((*found - click) * 1000);
                } else {
                    ++errors.lost;
                }
            }
        }
        std::ranges::sort(errors.found, {}, [](double error) { return std::abs(error); });
        return errors;
    }
};

TEST_P(SystemSoundTimingTest, SoundIsStampedWithTheTimeAtWhichItIsHeard) {
    const Path& path = GetParam();
    const PipeWireTestSink slow("slow-speakers", 50ms);
    const Platform platform = makeLinuxPlatform();
    const ClickPlayer player(path.sink);
    SoundStream stream(*platform.screenCapture, soundOf(path.kind, path.processes));
    ASSERT_EQ(stream.start(), nullptr);
    ASSERT_TRUE(stream.waitSeconds(3));
    const auto [found, lost] = errors(player.heardAt(), stream.heard());
    ASSERT_GE(found.size(), 10u);
    EXPECT_LE(lost, found.size() / 4);
    RecordProperty("medianErrorInMilliseconds", std::to_string(found[found.size() / 2]));
    RecordProperty("worstErrorInMilliseconds", std::to_string(found.back()));
    EXPECT_LT(std::abs(found.back()), 1.0);
}

INSTANTIATE_TEST_SUITE_P(
    , SystemSoundTimingTest,
    ::testing::Values(
        Path{"Monitor", "zorvane-test-speakers", SCContentFilterKind::excludingApplications, {}},
        Path{"Application", "zorvane-test-speakers", SCContentFilterKind::includingApplications, {oneProcess}},
        Path{"ApplicationOnSlowSpeakers", "slow-speakers", SCContentFilterKind::includingApplications, {oneProcess}}),
    [](const auto& path) { return path.param.name; });

}  // namespace
}  // namespace zorvane
