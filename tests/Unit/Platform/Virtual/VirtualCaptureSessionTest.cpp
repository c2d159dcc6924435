#include <gmock/gmock.h>

#include <cmath>
#include <mutex>

#include "Zorvane/Platform/AVFoundation/AVCaptureSession.hpp"
#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Virtual/VirtualCaptureDevices.hpp"
#include "Zorvane/Platform/Virtual/VirtualFrameCounter.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane {

void PrintTo(const CMVideoDimensions& size, std::ostream* stream) {
    *stream << size.width << "x" << size.height;
}

namespace {

using ::testing::ElementsAre;
using Part = VirtualSessionRefusal::Part;

constexpr double millisecond = 0.001;

/// What is noted of one sample. Times are seconds since the desktop was made.
struct Note {
    AVMediaType mediaType = AVMediaType::video;
    double time = 0;
    CMVideoDimensions size;
    double shown = -1;  ///< what the clock in the picture says
    bool isFlash = false;
    std::uint32_t channels = 0;
};

bool isWhiteAtTheBottom(const CVPixelBuffer& picture) {
    const CVPixelLayout& layout = picture.layout();
    return std::to_integer<int>(picture.bytes()[layout.bytesPerRow * (static_cast<std::size_t>(layout.height) - 1)]) >
           200;
}

class Notes final : public AVCaptureDataOutputSampleBufferDelegate {
  public:
    explicit Notes(std::function<double(CMTime)> seconds) : seconds_(std::move(seconds)) {}

    void captureOutput(const AVCaptureDataOutput& output, const CMSampleBuffer& sample) override {
        Note note{.mediaType = output.mediaType(), .time = seconds_(sample.presentationTimeStamp())};
        if (const CVPixelBufferRef& image = sample.imageBuffer()) {
            note.size = sample.formatDescription() ? sample.formatDescription()->dimensions : CMVideoDimensions{};
            note.shown = readFrameCounter(image->bytes(), image->layout()).value_or(0) * millisecond;
            note.isFlash = isWhiteAtTheBottom(*image);
        } else {
            note.channels = sample.audioBuffer()->format().channelCount;
        }
        const std::lock_guard lock(mutex_);
        notes_.push_back(note);
        if (keeps_) {
            kept_.push_back(sample);
        }
    }

    void keepSamples() { keeps_ = true; }

    std::vector<Note> of(AVMediaType mediaType) const {
        const std::lock_guard lock(mutex_);
        std::vector<Note> notes;
        std::ranges::copy_if(notes_, std::back_inserter(notes),
                             [mediaType](const Note& note) { return note.mediaType == mediaType; });
        return notes;
    }

  private:
    const std::function<double(CMTime)> seconds_;
    bool keeps_ = false;
    mutable std::mutex mutex_;
    std::vector<Note> notes_;
    std::vector<CMSampleBuffer> kept_;
};

class VirtualCaptureSessionTest : public testing::VirtualWorldTest {
  protected:
    AVCaptureDevices& devices() { return *Platform::current()->captureDevices; }
    AVCaptureDeviceInput input(const std::string& deviceID) {
        return devices().makeDeviceInput(devices().deviceWithUniqueID(deviceID));
    }
    std::shared_ptr<AVCaptureDataOutput> output(AVMediaType mediaType) {
        auto made = std::make_shared<AVCaptureDataOutput>(mediaType, queue);
        made->setSampleBufferDelegate(notes);
        return made;
    }
    std::shared_ptr<AVCaptureSession> makeSession(const std::vector<std::string>& deviceIDs,
                                                  const std::vector<AVMediaType>& mediaTypes) {
        auto session = devices().makeCaptureSession();
        for (const std::string& deviceID : deviceIDs) {
            EXPECT_TRUE(session->canAddInput(input(deviceID))) << deviceID;
            session->addInput(input(deviceID));
        }
        for (const AVMediaType mediaType : mediaTypes) {
            session->addOutput(output(mediaType));
        }
        interruptions = session->observeInterruptions([this](AVMediaType mediaType, const std::exception_ptr& reason) {
            told.emplace_back(mediaType, reason == nullptr);
        });
        return session;
    }
    std::vector<Note> pictures() const { return notes->of(AVMediaType::video); }
    std::vector<Note> sounds() const { return notes->of(AVMediaType::audio); }
    /// The longest time between two pictures.
    double longestGap() const {
        double longest = 0;
        const std::vector<Note> seen = pictures();
        for (std::size_t index = 1; index < seen.size(); ++index) {
            longest = std::max(longest, seen[index].time - seen[index - 1].time);
        }
        return longest;
    }

    const DispatchQueue queue = DispatchQueue::serial("VirtualCaptureSessionTest");
    double secondsBehind = 0;  // of the session's clock
    const std::shared_ptr<Notes> notes =
        std::make_shared<Notes>([this](CMTime stamp) { return stamp.seconds() + secondsBehind - hostSeconds(0); });
    NSKeyValueObservation interruptions;
    std::vector<std::pair<AVMediaType, bool>> told;  // whether the device is back
};

TEST_F(VirtualCaptureSessionTest, PicturesRiseInTimeAndShowWhenTheyWereTaken) {
    secondsBehind = 3;
    desktop->now()
        .setCaptureClock(secondsBehind)
        .plugDevice(VirtualDevice::camera("cam", "Camera"))
        .changeCamera("cam", [](VirtualCamera& camera) {
            camera.framesPerSecond = 25;
            camera.driftPPM = 1000;
            camera.latency = std::chrono::milliseconds(60);
            camera.jitter = std::chrono::milliseconds(10);
        });
    const auto session = makeSession({"cam"}, {AVMediaType::video});
    session->startRunning();
    advance(10);
    EXPECT_EQ(session->synchronizationClock()->convertToHostTime(kCMTimeZero).seconds(), secondsBehind);
    EXPECT_NEAR(static_cast<double>(pictures().size()), 9.94 * 25 * 1.001, 1);
    EXPECT_LT(longestGap(), 0.0505);
    double last = 0;
    for (const Note& picture : pictures()) {
        EXPECT_NEAR(picture.time, picture.shown, 0.0055);
        EXPECT_GT(picture.time, last);
        EXPECT_EQ(picture.size, (CMVideoDimensions{640, 480}));
        last = picture.time;
    }
    session->stopRunning();
    const std::size_t atStop = pictures().size();
    advance(1);
    EXPECT_EQ(pictures().size(), atStop);
}

TEST_F(VirtualCaptureSessionTest, ACameraFollowsItsScriptInMidStream) {
    desktop->now().plugDevice(VirtualDevice::camera("cam", "Camera"));
    desktop->at(0.995).turnCamera("cam").flashAtCamera("cam", 0.25);
    desktop->at(1.995).changeCamera("cam", [](VirtualCamera& camera) {
        camera.size = {1280, 721};
        camera.framesPerSecond = 5;
    });
    const auto session = makeSession({"cam"}, {AVMediaType::video});
    session->startRunning();
    advance(4);
    for (const Note& picture : pictures()) {
        const bool isTurned = picture.time > 0.995 && picture.time < 1.995;
        EXPECT_EQ(picture.size, picture.time > 1.995 ? (CMVideoDimensions{1280, 721})
                                : isTurned           ? (CMVideoDimensions{480, 640})
                                                     : (CMVideoDimensions{640, 480}));
        EXPECT_EQ(picture.isFlash, isTurned && picture.time < 1.245) << picture.time;
        EXPECT_NEAR(picture.time, picture.shown, millisecond);
    }
    EXPECT_EQ(pictures().size(), 59u + 11u);
    EXPECT_EQ(devices().deviceWithUniqueID("cam")->activeFormat().dimensions, (CMVideoDimensions{1280, 721}));
}

TEST_F(VirtualCaptureSessionTest, AnAbsentCameraIsToldOfAndACoveredOneIsNot) {
    desktop->now()
        .plugDevice(VirtualDevice::camera("cam", "Camera"))
        .plugDevice(VirtualDevice::camera("other", "Another"))
        .plugDevice(VirtualDevice::microphone("mic", "Microphone"));
    desktop->at(1).unplugDevice("cam");
    desktop->at(2).plugDevice(VirtualDevice::camera("cam", "Camera"));
    desktop->at(3).changeCamera("cam", [](VirtualCamera& camera) { camera.isCovered = true; });
    desktop->at(4.5).changeCamera("cam", [](VirtualCamera& camera) { camera.isCovered = false; });
    desktop->at(6).loseCameraPictures("cam", 0.5);
    const auto session = makeSession({"mic", "cam"}, {AVMediaType::audio, AVMediaType::video});
    session->startRunning();
    advance(2.9);
    EXPECT_NEAR(longestGap(), 1, 0.04);
    EXPECT_THAT(told, ElementsAre(std::pair(AVMediaType::video, false), std::pair(AVMediaType::video, true)));
    advance(5);
    EXPECT_NEAR(longestGap(), 1.5, 0.04);
    EXPECT_EQ(told.size(), 2u);
    EXPECT_NEAR(static_cast<double>(pictures().size()), 7.9 * 30 - 90, 4);
    EXPECT_NEAR(sounds().back().time, 7.9, 0.1) << "what happens to one device is nothing to the other";
}

TEST_F(VirtualCaptureSessionTest, APhoneGivesSoundAndPicturesThroughOneInput) {
    VirtualDevice phone = VirtualDevice::phone("phone", "Phone");
    phone.soundFormat.channelCount = 6;
    desktop->now().plugDevice(phone).changeCamera("phone", [](VirtualCamera& camera) {
        camera.isCovered = true;
        camera.minFrameDuration = kCMTimeInvalid;
        camera.describesPictures = false;
    });
    desktop->at(1).changeCamera("phone", [](VirtualCamera& camera) { camera.isCovered = false; });
    const auto session = makeSession({"phone"}, {AVMediaType::audio, AVMediaType::video});
    session->startRunning();
    advance(0.9);
    EXPECT_GT(sounds().size(), 5u);
    EXPECT_EQ(sounds().back().channels, 6u);
    EXPECT_TRUE(pictures().empty()) << "it is locked";
    advance(1);
    EXPECT_FALSE(pictures().empty());
    EXPECT_EQ(pictures().back().size, CMVideoDimensions{}) << "not described";
    const auto device = devices().deviceWithUniqueID("phone");
    EXPECT_EQ(device->activeFormat().dimensions, (CMVideoDimensions{360, 640}));
    EXPECT_FALSE(device->activeVideoMinFrameDuration().isNumeric());
    desktop->now().pairDevice("phone", AVCaptureDevicePairing::notPaired);
    advance(1);
    EXPECT_THAT(told, ElementsAre(std::pair(AVMediaType::muxed, false))) << "once, though both its media miss it";
}

TEST_F(VirtualCaptureSessionTest, ASessionTakesOneDeviceAndOneOutputForEachMediaType) {
    const std::vector<std::string> all{"cam", "mic", "phone"};
    desktop->now()
        .plugDevice(VirtualDevice::camera("cam", "Camera"))
        .plugDevice(VirtualDevice::microphone("mic", "Microphone"))
        .plugDevice(VirtualDevice::phone("phone", "Phone"));
    struct Row {
        std::vector<std::string> inputs;
        std::vector<std::string> fitting;
        bool takesVideo;
        bool takesAudio;
    };
    const Row rows[] = {{{}, all, false, false},
                        {{"cam"}, {"mic"}, true, false},
                        {{"mic"}, {"cam"}, false, true},
                        {{"mic", "cam"}, {}, true, true},
                        {{"phone"}, {}, true, true}};
    for (const Row& row : rows) {
        const auto session = makeSession(row.inputs, {});
        std::vector<std::string> fitting;
        std::ranges::copy_if(all, std::back_inserter(fitting),
                             [&](const std::string& deviceID) { return session->canAddInput(input(deviceID)); });
        EXPECT_EQ(fitting, row.fitting);
        EXPECT_EQ(session->canAddOutput(*output(AVMediaType::video)), row.takesVideo);
        EXPECT_EQ(session->canAddOutput(*output(AVMediaType::audio)), row.takesAudio);
    }
    const auto session = makeSession({"phone"}, {AVMediaType::video});
    EXPECT_FALSE(session->canAddOutput(*output(AVMediaType::video)));
    EXPECT_TRUE(session->hasEnabledConnection(AVMediaType::video));
    EXPECT_FALSE(session->hasEnabledConnection(AVMediaType::audio));
}

TEST_F(VirtualCaptureSessionTest, WhatTheScriptRefusesIsRefused) {
    desktop->now()
        .plugDevice(VirtualDevice::camera("cam", "Camera"))
        .occupyDevice("cam")
        .refuseInCapture(VirtualSessionRefusal{Part::output, AVMediaType::video});
    try {
        input("cam");
        ADD_FAILURE() << "another program has it";
    } catch (const NSError& error) {
        EXPECT_EQ(error.code(), AVErrorDeviceInUseByAnotherApplication);
        EXPECT_EQ(error.localizedDescription(), "Another program is using “Camera”.");
    }
    desktop->now().freeDevice("cam");
    EXPECT_FALSE(makeSession({"cam"}, {})->canAddOutput(*output(AVMediaType::video)));
    desktop->now().refuseInCapture(VirtualSessionRefusal{Part::connection, AVMediaType::video});
    EXPECT_FALSE(makeSession({"cam"}, {AVMediaType::video})->hasEnabledConnection(AVMediaType::video));
    desktop->now().refuseInCapture(VirtualSessionRefusal{Part::input, AVMediaType::video});
    EXPECT_FALSE(devices().makeCaptureSession()->canAddInput(input("cam")));
}

TEST_F(VirtualCaptureSessionTest, PicturesThatAreHeldKeepNewOnesFromComing) {
    desktop->now().plugDevice(VirtualDevice::camera("cam", "Camera"));
    notes->keepSamples();
    const auto session = makeSession({"cam"}, {AVMediaType::video});
    session->startRunning();
    advance(1);
    EXPECT_EQ(pictures().size(), 4u);
}

}  // namespace
}  // namespace zorvane
