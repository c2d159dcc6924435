// Microphones that are captured, unplugged, and never replaced.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <mutex>

#include "Zorvane/Platform/AVFoundation/AVCaptureSession.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegAudioConverter.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureDevices.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "tests/Desktop/PipeWire/DeviceWatcher.hpp"
#include "tests/Support/PipeWireTestClient.hpp"
#include "tests/Support/PipeWireTestMicrophone.hpp"
#include "tests/Support/PrivatePipeWire.hpp"
#include "tests/Support/SoundCollector.hpp"

namespace zorvane {
namespace {

using testing::ElementsAre;

/// What a session tells of its device: "" when it is back, else why it is gone.
class Interruptions {
  public:
    explicit Interruptions(AVCaptureSession& session)
        : observation_(
              session.observeInterruptions([this](AVMediaType, const std::exception_ptr& reason) { add(reason); })) {}

    std::vector<std::string> waitFor(std::size_t count) {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, patience, [&] { return told_.size() >= count; });
        return told_;
    }

  private:
    void add(const std::exception_ptr& reason) {
        std::string text;
        try {
            reason ? std::rethrow_exception(reason) : void();
        } catch (const NSError& error) {
            text = error.localizedDescription();
        }
        const std::lock_guard lock(mutex_);
        told_.push_back(text);
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> told_;
    NSKeyValueObservation observation_;
};

class PipeWireCaptureSessionTest : public testing::Test {
  protected:
    PipeWireCaptureSessionTest() { service_.startAndWait(); }

    /// The capture of a device that is listed or will be.
    std::shared_ptr<AVCaptureSession> capture(const std::string& uniqueID) {
        DeviceWatcher(devices_, AVMediaType::audio).waitUntilListed(uniqueID);
        auto session = devices_.makeCaptureSession();
        const AVCaptureDeviceInput input = devices_.makeDeviceInput(devices_.deviceWithUniqueID(uniqueID));
        EXPECT_TRUE(session->canAddInput(input));
        session->addInput(input);
        auto output = std::make_shared<AVCaptureDataOutput>(AVMediaType::audio, DispatchQueue::serial("test.sound"));
        output->setSampleBufferDelegate(sound_);
        EXPECT_TRUE(session->canAddOutput(*output));
        session->addOutput(output);
        return session;
    }

    PrivatePipeWire service_;
    PipeWireCaptureDevices devices_{std::make_shared<PipeWireSession>(), std::make_shared<FFmpegAudioConverting>(),
                                    nullptr};
    std::shared_ptr<SoundCollector> sound_ = std::make_shared<SoundCollector>();
};

TEST_F(PipeWireCaptureSessionTest, SoundOfEveryChannelStandsWhereItWasHeard) {
    constexpr std::uint32_t channelCount = 6;
    const PipeWireTestMicrophone microphone(
        {.name = "mic", .channelCount = channelCount, .latency = std::chrono::milliseconds(150)});
    const auto session = capture("mic");
    session->startRunning();
    ASSERT_TRUE(sound_->waitForFrames(96000));
    session->stopRunning();

    const SoundCollector::Samples samples = sound_->samples();
    EXPECT_EQ(samples.front().audioBuffer()->format(),
              (AVAudioFormat{AVAudioCommonFormat::float32, 48000, channelCount}));
    EXPECT_EQ(session->synchronizationClock()->convertToHostTime(CMTime::make(7, 5)), CMTime::make(7, 5));
    const double rightFrames = shareOfFrames(samples, [](double, const float* channels) {
        bool isRight = true;
        for (std::uint32_t channel = 1; channel < channelCount; ++channel) {
            const float expected = channels[0] * static_cast<float>(channel + 1);
            isRight = isRight && std::abs(channels[channel] - expected) < 1e-3;
        }
        return isRight;
    });
    EXPECT_GT(rightFrames, 0.5) << "each channel has its own";
    const double error = errorOfTime(samples);
    RecordProperty("error_us", static_cast<int>(error * 1e6));
    EXPECT_LT(error, tolerableErrorOfTime) << "the latency is taken out";
}

TEST_F(PipeWireCaptureSessionTest, ADeviceKeepsItsOwnRateThoughTheGraphHasAnother) {
    PipeWireTestClient client;
    client.addNode({{"node.name", "mic"},
                    {"media.class", "Audio/Source/Virtual"},
                    {"audio.rate", "44100"},
                    {"audio.position", "[ FL FR FC ]"},
                    {"adapter.auto-port-config", "{ mode = dsp monitor = true position = preserve }"}});
    const auto session = capture("mic");
    session->startRunning();
    ASSERT_TRUE(sound_->waitForFrames(4410));
    session->stopRunning();
    EXPECT_EQ(sound_->samples().front().audioBuffer()->format(),
              (AVAudioFormat{AVAudioCommonFormat::float32, 44100, 3}));
}

TEST_F(PipeWireCaptureSessionTest, AMicrophoneThatIsUnpluggedIsReplacedByNoOther) {
    PipeWireTestClient client;
    const PipeWireTestMicrophone other({.name = "other", .channelCount = 2});
    client.setDefault("default.audio.source", R"({ "name": "other" })");
    auto microphone = std::make_unique<PipeWireTestMicrophone>(PipeWireTestMicrophone::Settings{.name = "mic"});
    const auto session = capture("mic");
    const auto device = devices_.deviceWithUniqueID("mic");
    Interruptions interruptions(*session);
    session->startRunning();
    ASSERT_TRUE(sound_->waitForFrames(4800));

    microphone.reset();
    EXPECT_THAT(interruptions.waitFor(1), ElementsAre("The microphone “mic” was unplugged."));
    DeviceWatcher(devices_, AVMediaType::audio).waitUntilGone("mic");
    EXPECT_THROW(devices_.makeDeviceInput(device), NSError);
    microphone = std::make_unique<PipeWireTestMicrophone>(PipeWireTestMicrophone::Settings{.name = "mic"});
    EXPECT_THAT(interruptions.waitFor(2), ElementsAre("The microphone “mic” was unplugged.", ""));
    EXPECT_TRUE(sound_->waitForMoreFrames(4800));
    session->stopRunning();
    EXPECT_LT(errorOfTime(sound_->samples()), tolerableErrorOfTime);
}

TEST_F(PipeWireCaptureSessionTest, ACaptureOutlivesARestartOfPipeWire) {
    auto microphone = std::make_unique<PipeWireTestMicrophone>(PipeWireTestMicrophone::Settings{.name = "mic"});
    const auto session = capture("mic");
    Interruptions interruptions(*session);
    session->startRunning();
    ASSERT_TRUE(sound_->waitForFrames(4800));

    service_.kill();
    const std::string ended = "PipeWire ended: the microphone “mic” can't be heard until it is back.";
    EXPECT_THAT(interruptions.waitFor(1), ElementsAre(ended));
    microphone.reset();
    service_.startAndWait();
    microphone = std::make_unique<PipeWireTestMicrophone>(PipeWireTestMicrophone::Settings{.name = "mic"});
    const auto told = interruptions.waitFor(2);
    EXPECT_EQ(told.back(), "");
    EXPECT_TRUE(sound_->waitForMoreFrames(4800));
    session->stopRunning();
    EXPECT_LT(errorOfTime(sound_->samples()), tolerableErrorOfTime);
}

TEST_F(PipeWireCaptureSessionTest, NothingComesAfterTheStop) {
    const PipeWireTestMicrophone microphone({.name = "mic"});
    std::vector<std::unique_ptr<Interruptions>> interruptions;
    for (int round = 0; round < 10; ++round) {
        const auto session = capture("mic");
        interruptions.push_back(std::make_unique<Interruptions>(*session));
        session->startRunning();
        session->startRunning();
        if (round % 2 == 0) {
            ASSERT_TRUE(sound_->waitForMoreFrames(1));
        }
        session->stopRunning();
        const std::size_t count = sound_->count();
        session->stopRunning();
        EXPECT_EQ(sound_->count(), count);
    }
    const auto session = capture("mic");
    session->startRunning();
    ASSERT_TRUE(sound_->waitForMoreFrames(1)) << "by when all that was before has ended";
    for (const auto& told : interruptions) {
        EXPECT_THAT(told->waitFor(0), testing::IsEmpty());
    }
    service_.kill();  // in the middle of it, and of the end of the session
}

TEST_F(PipeWireCaptureSessionTest, TakesOneMicrophoneAndItsSoundOnly) {
    const PipeWireTestMicrophone microphone({.name = "mic", .channelCount = 3});
    PipeWireTestClient client;
    client.addNode({{"node.name", "camera"}, {"media.class", "Video/Source"}});
    DeviceWatcher(devices_, AVMediaType::audio).waitUntilListed("mic");
    DeviceWatcher(devices_, AVMediaType::video).waitUntilListed("camera");
    const auto session = devices_.makeCaptureSession();
    const AVCaptureDataOutput sound(AVMediaType::audio, DispatchQueue::serial("sound"));
    const AVCaptureDataOutput pictures(AVMediaType::video, DispatchQueue::serial("pictures"));
    EXPECT_FALSE(session->canAddInput({devices_.deviceWithUniqueID("camera")}));
    EXPECT_FALSE(session->canAddOutput(sound)) << "there is no input yet";
    session->startRunning();  // with nothing to capture it does nothing

    const auto device = devices_.deviceWithUniqueID("mic");
    EXPECT_EQ(device->activeFormat().audioFormat->channelCount, 3u);
    EXPECT_FALSE(device->isInUseByAnotherApplication());
    session->addInput({device});
    EXPECT_FALSE(session->canAddInput({device})) << "one is there";
    EXPECT_TRUE(session->canAddOutput(sound));
    EXPECT_FALSE(session->canAddOutput(pictures));
    EXPECT_FALSE(session->hasEnabledConnection(AVMediaType::audio));
    EXPECT_EQ(devices_.deviceWithUniqueID("nobody"), nullptr);
}

}  // namespace
}  // namespace zorvane
