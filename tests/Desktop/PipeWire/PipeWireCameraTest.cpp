// Cameras that are captured, unplugged, and never replaced.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <mutex>

#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegAudioConverter.hpp"
#include "Zorvane/Platform/FFmpeg/FFmpegVideoConverter.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureDevices.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Virtual/VirtualFrameCounter.hpp"
#include "tests/Desktop/PipeWire/DeviceWatcher.hpp"
#include "tests/Support/PictureCollector.hpp"
#include "tests/Support/PipeWireTestCamera.hpp"
#include "tests/Support/PipeWireTestMicrophone.hpp"
#include "tests/Support/PrivatePipeWire.hpp"
#include "tests/Support/SoundCollector.hpp"
#include "tests/Support/TestPicture.hpp"
#include "tests/Support/WaitUntil.hpp"

namespace zorvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using testing::ElementsAre;
using enum AVVideoSourceFormat;
using Fault = PipeWireTestCamera::Fault;

constexpr PipeWireVideoFormat small{.encoding = yuyv, .size = {320, 240}, .rate = {50, 1}};

/// What a collector notes of a picture: its number, how far its colour is off, and whether it is a flash.
struct Look {
    std::int64_t number = -1;
    int colourError = 0;
    bool isFlash = false;

    static std::int64_t pack(const CVPixelBuffer& picture) {
        const auto number = readFrameCounter(picture.bytes(), picture.layout());
        const std::int64_t flash = TestPicture::isFlash(picture) ? 1 : 0;
        return number ? std::int64_t{*number} << 16 | flash << 15 | TestPicture::colourError(picture) : -1;
    }
    static Look of(const PictureCollector::Seen& seen) {
        return seen.value < 0 ? Look()
                              : Look{.number = seen.value >> 16,
                                     .colourError = static_cast<int>(seen.value & 0x7FFF),
                                     .isFlash = (seen.value >> 15 & 1) != 0};
    }
};

/// What a session tells of its devices: the input, and "" when it is back, else why it is gone.
class Interruptions {
  public:
    using Told = std::vector<std::pair<AVMediaType, std::string>>;

    explicit Interruptions(AVCaptureSession& session)
        : observation_(session.observeInterruptions(
              [this](AVMediaType input, const std::exception_ptr& reason) { add(input, reason); })) {}

    Told waitFor(std::size_t count) {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, patience, [&] { return told_.size() >= count; });
        return told_;
    }

  private:
    void add(AVMediaType input, const std::exception_ptr& reason) {
        std::string text;
        try {
            reason ? std::rethrow_exception(reason) : void();
        } catch (const NSError& error) {
            text = error.localizedDescription();
        }
        const std::lock_guard lock(mutex_);
        told_.emplace_back(input, text);
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    Told told_;
    NSKeyValueObservation observation_;
};

class PipeWireCameraTest : public testing::Test {
  protected:
    /// Of devices that are listed or will be.
    std::shared_ptr<AVCaptureSession> capture(const std::string& uniqueID, AVMediaType mediaType = AVMediaType::video) {
        DeviceWatcher(devices_, mediaType).waitUntilListed(uniqueID);
        auto session = devices_.makeCaptureSession();
        const AVCaptureDeviceInput input = devices_.makeDeviceInput(devices_.deviceWithUniqueID(uniqueID));
        EXPECT_TRUE(session->canAddInput(input));
        session->addInput(input);
        addOutput(*session, AVMediaType::video, pictures_);
        return session;
    }

    static void addOutput(AVCaptureSession& session, AVMediaType mediaType,
                          std::weak_ptr<AVCaptureDataOutputSampleBufferDelegate> delegate) {
        auto output = std::make_shared<AVCaptureDataOutput>(mediaType, DispatchQueue::serial("test.samples"));
        output->setSampleBufferDelegate(std::move(delegate));
        ASSERT_TRUE(session.canAddOutput(*output));
        session.addOutput(output);
    }

    std::vector<PictureCollector::Seen> seen() const { return pictures_->pictures(); }

    PipeWireCaptureDevices devices_{std::make_shared<PipeWireSession>(), std::make_shared<FFmpegAudioConverting>(),
                                    std::make_shared<FFmpegVideoConverting>()};
    std::shared_ptr<PictureCollector> pictures_ = std::make_shared<PictureCollector>(Look::pack);
};

/// With a PipeWire of its own, in which nobody links but who is asked to.
class PipeWirePrivateCameraTest : public PipeWireCameraTest {
  protected:
    PipeWirePrivateCameraTest() { service_.startAndWait(); }

    PrivatePipeWire service_;
};

/// Each picture's time, against when the camera has taken the one of its number.
void expectTrueTimes(const std::vector<PictureCollector::Seen>& seen,
                     const std::vector<PipeWireTestCamera::Taken>& taken, nanoseconds tolerance) {
    std::int64_t last = 0;
    for (const auto& picture : seen) {
        const Look look = Look::of(picture);
        ASSERT_TRUE(look.number >= 0 && look.number < static_cast<std::int64_t>(taken.size())) << look.number;
        const nanoseconds truth = taken[static_cast<std::size_t>(look.number)].time;
        EXPECT_LE(std::abs(picture.time - truth.count()), tolerance.count()) << "picture " << look.number;
        EXPECT_GT(picture.time, last);
        last = picture.time;
    }
}

TEST_F(PipeWireCameraTest, PicturesOfTheDesktopsCameraCome) {
    const auto session = capture("zorvane-test-camera");
    const auto device = devices_.deviceWithUniqueID("zorvane-test-camera");
    EXPECT_EQ(device->activeFormat().dimensions, (CMVideoDimensions{320, 240}));
    EXPECT_EQ(device->activeVideoMinFrameDuration(), CMTime::make(1, 25));
    session->startRunning();
    ASSERT_TRUE(pictures_->waitForPictures(10));
    session->stopRunning();
    for (const auto& picture : seen()) {
        EXPECT_EQ(picture.described, (CMVideoDimensions{320, 240}));
    }
}

TEST_F(PipeWirePrivateCameraTest, PicturesOfEveryFormatHaveTheirSizeColourAndTime) {
    using Stamp = PipeWireTestCamera::Stamp;
    using Memory = PipeWireTestCamera::Memory;
    struct Row {
        AVVideoSourceFormat encoding;
        Stamp stamp = Stamp::hostClock;
        Memory memory = Memory::server;
        nanoseconds tolerance{0};
    };
    constexpr milliseconds oneFrame{20};
    const Row rows[] = {{yuyv},
                        {nv12, Stamp::hostClock, Memory::device},
                        {i420},
                        {rgb},
                        {jpeg},
                        {yuyv, Stamp::ownClock, Memory::server, oneFrame},
                        {yuyv, Stamp::none, Memory::server, oneFrame}};
    int number = 0;
    for (const Row& row : rows) {
        const std::string name = "camera-" + std::to_string(++number);
        SCOPED_TRACE(name);
        pictures_ = std::make_shared<PictureCollector>(Look::pack);
        const PipeWireTestCamera camera(
            {.name = name, .formats = {{row.encoding, {642, 480}, {50, 1}}}, .stamp = row.stamp, .memory = row.memory});
        const auto session = capture(name);
        EXPECT_EQ(devices_.deviceWithUniqueID(name)->activeVideoMinFrameDuration(), CMTime::make(1, 50));
        session->startRunning();
        ASSERT_TRUE(pictures_->waitForPictures(15));
        session->stopRunning();
        expectTrueTimes(seen(), camera.taken(), row.tolerance);
        for (const auto& picture : seen()) {
            EXPECT_EQ(picture.layout.format, CVPixelFormat::yCbCr420VideoRange);
            EXPECT_EQ(picture.described, (CMVideoDimensions{642, 480}));
            EXPECT_EQ(picture.layout.width, 642);
            const Look look = Look::of(picture);
            EXPECT_TRUE(look.isFlash || look.colourError <= 4) << look.colourError;
        }
    }
}

TEST_F(PipeWirePrivateCameraTest, TheBestOfItsFormatsIsTaken) {
    const PipeWireTestCamera camera({.name = "camera",
                                     .formats = {{yuyv, {640, 480}, {30, 1}},
                                                 {yuyv, {1920, 1080}, {5, 1}},
                                                 {jpeg, {1280, 720}, {30, 1}},
                                                 {nv12, {1280, 720}, {30000, 1001}},
                                                 {yuyv, {1280, 720}, {10, 1}}},
                                     .offersH264 = true});
    const auto session = capture("camera");
    const auto device = devices_.deviceWithUniqueID("camera");
    EXPECT_EQ(device->activeFormat().dimensions, (CMVideoDimensions{1280, 720}));
    session->startRunning();
    ASSERT_TRUE(pictures_->waitForPictures(10));
    session->stopRunning();
    EXPECT_EQ(seen().front().described, (CMVideoDimensions{1280, 720}));
}

TEST_F(PipeWirePrivateCameraTest, ACameraOfH264AloneIsListedAndRefused) {
    const PipeWireTestCamera camera({.name = "camera", .offersH264 = true});
    DeviceWatcher(devices_, AVMediaType::video).waitUntilListed("camera");
    try {
        devices_.makeDeviceInput(devices_.deviceWithUniqueID("camera"));
        ADD_FAILURE() << "it was opened";
    } catch (const NSError& error) {
        EXPECT_EQ(error.localizedDescription(),
                  "The camera “camera” gives its pictures in no format that can be read, such as raw ones or JPEG.");
    }
}

TEST_F(PipeWirePrivateCameraTest, BrokenPicturesAreLeftOutAndTheRestGoesOn) {
    PipeWireTestCamera camera({.name = "camera", .formats = {small}});
    const auto session = capture("camera");
    session->startRunning();
    for (const Fault fault :
         {Fault::cutOff, Fault::outsideMemory, Fault::backwards, Fault::narrowRows, Fault::markedBroken, Fault::gap}) {
        const auto before = camera.taken().size();
        camera.setFault(fault);
        waitUntil([&] { return camera.taken().size() >= before + 3; });
        camera.setFault(Fault::none);
        ASSERT_TRUE(pictures_->waitForMorePictures(2));
    }
    session->stopRunning();
    const auto taken = camera.taken();
    for (const auto& picture : seen()) {
        const auto number = static_cast<std::size_t>(Look::of(picture).number);
        ASSERT_LT(number, taken.size());
        EXPECT_EQ(taken[number].fault, Fault::none) << number;
    }
}

TEST_F(PipeWirePrivateCameraTest, ABrokenJPEGIsLeftOut) {
    PipeWireTestCamera camera({.name = "camera", .formats = {{jpeg, {320, 240}, {50, 1}}}});
    const auto session = capture("camera");
    session->startRunning();
    ASSERT_TRUE(pictures_->waitForPictures(3));
    camera.setFault(Fault::garbage);
    const auto before = camera.taken().size();
    waitUntil([&] { return camera.taken().size() >= before + 5; });
    camera.setFault(Fault::none);
    ASSERT_TRUE(pictures_->waitForMorePictures(3));
    session->stopRunning();
    for (const auto& picture : seen()) {
        EXPECT_GE(Look::of(picture).number, 0);
    }
}

TEST_F(PipeWirePrivateCameraTest, AnotherSizeInTheMiddleGivesPicturesOfThatSize) {
    PipeWireTestCamera camera({.name = "camera", .formats = {small}});
    const auto session = capture("camera");
    session->startRunning();
    ASSERT_TRUE(pictures_->waitForPictures(5));
    constexpr CMVideoDimensions larger{640, 480};
    camera.setFormats({{nv12, larger, {50, 1}}});
    ASSERT_TRUE(
        pictures_->waitFor([&](const auto& all) { return all.size() > 9 && (all.end() - 5)->described == larger; }));
    session->stopRunning();
    expectTrueTimes(seen(), camera.taken(), nanoseconds(0));
    EXPECT_EQ(seen().back().layout.width, larger.width);
}

// In the desktop the session manager is at hand, which gives streams another source when their own goes.
TEST_F(PipeWireCameraTest, ACameraThatIsUnpluggedIsReplacedByNoOther) {
    const PipeWireTestCamera other({.name = "other", .formats = {small}, .properties = {{"priority.session", "5000"}}});
    auto make = [] {
        return std::make_unique<PipeWireTestCamera>(PipeWireTestCamera::Settings{.name = "camera", .formats = {small}});
    };
    auto camera = make();
    const auto session = capture("camera");
    Interruptions interruptions(*session);
    session->startRunning();
    ASSERT_TRUE(pictures_->waitForPictures(5));

    camera.reset();
    const auto unplugged = std::pair(AVMediaType::video, std::string("The camera “camera” was unplugged."));
    EXPECT_THAT(interruptions.waitFor(1), ElementsAre(unplugged));
    camera = make();
    EXPECT_THAT(interruptions.waitFor(2), ElementsAre(unplugged, std::pair(AVMediaType::video, std::string())));
    EXPECT_TRUE(pictures_->waitForMorePictures(5));
    session->stopRunning();
    EXPECT_TRUE(other.taken().empty()) << "nobody has ever looked through it";
}

TEST_F(PipeWirePrivateCameraTest, ACaptureOutlivesARestartOfPipeWire) {
    const PipeWireTestCamera::Settings settings{.name = "camera", .formats = {small}};
    auto camera = std::make_unique<PipeWireTestCamera>(settings);
    const auto session = capture("camera");
    Interruptions interruptions(*session);
    session->startRunning();
    ASSERT_TRUE(pictures_->waitForPictures(5));

    service_.kill();
    const std::string ended = "PipeWire ended: the camera “camera” can't be seen until it is back.";
    EXPECT_THAT(interruptions.waitFor(1), ElementsAre(std::pair(AVMediaType::video, ended)));
    camera.reset();
    service_.startAndWait();
    camera = std::make_unique<PipeWireTestCamera>(settings);
    EXPECT_EQ(interruptions.waitFor(2).back(), std::pair(AVMediaType::video, std::string()));
    EXPECT_TRUE(pictures_->waitForMorePictures(5));
    session->stopRunning();
}

TEST_F(PipeWirePrivateCameraTest, ACameraThatGivesNothingThatCanBeReadSaysSoAndIsTriedAgain) {
    PipeWireTestCamera camera({.name = "camera", .formats = {small}, .offersH264 = true});
    const auto session = capture("camera");
    Interruptions interruptions(*session);
    session->startRunning();
    ASSERT_TRUE(pictures_->waitForPictures(3));
    camera.setFormats({});
    const auto told = interruptions.waitFor(1);
    ASSERT_EQ(told.size(), 1u);
    EXPECT_THAT(told.front().second, testing::StartsWith("The camera “camera” gives no pictures."));
    camera.setFault(Fault::gap);
    camera.setFormats({small});
    const auto before = camera.taken().size();
    waitUntil([&] { return camera.taken().size() >= before + 10; });
    EXPECT_EQ(interruptions.waitFor(1).size(), 1u) << "a camera that runs isn't one that gives pictures";
    camera.setFault(Fault::none);
    EXPECT_EQ(interruptions.waitFor(2).back(), std::pair(AVMediaType::video, std::string()));
    EXPECT_TRUE(pictures_->waitForMorePictures(3));
    session->stopRunning();
}

TEST_F(PipeWirePrivateCameraTest, NothingComesAfterTheStop) {
    const PipeWireTestCamera camera({.name = "camera", .formats = {{yuyv, {320, 240}, {200, 1}}}});
    for (int round = 0; round < 10; ++round) {
        const auto session = capture("camera");
        session->startRunning();
        if (round % 2 == 0) {
            ASSERT_TRUE(pictures_->waitForMorePictures(2));
        }
        session->stopRunning();
        const std::size_t count = pictures_->count();
        session->stopRunning();
        EXPECT_EQ(pictures_->count(), count);
    }
    const auto session = capture("camera");
    session->startRunning();
    ASSERT_TRUE(pictures_->waitForMorePictures(1));
    service_.kill();  // in the middle of it, and of the end of the session
}

TEST_F(PipeWirePrivateCameraTest, ACaptureCardGivesPicturesAndSoundInStep) {
    const std::map<std::string, std::string> place{{"device.bus-path", "pci-0000:00:14.0-usb-0:2:1.0"},
                                                   {"device.product.name", "USB HDMI Capture"}};
    auto camera = std::make_unique<PipeWireTestCamera>(
        PipeWireTestCamera::Settings{.name = "card-video", .formats = {small}, .properties = place});
    auto microphone = std::make_unique<PipeWireTestMicrophone>(PipeWireTestMicrophone::Settings{
        .name = "card-audio", .properties = {{"device.bus-path", "pci-0000:00:14.0-usb-0:2:1.3"}}});
    const auto session = capture("capture-card:card-video", AVMediaType::muxed);
    const auto card = devices_.deviceWithUniqueID("capture-card:card-video");
    EXPECT_EQ(card->deviceType(), AVCaptureDeviceType::externalUnknown);
    EXPECT_EQ(card->localizedName(), "card-video");
    EXPECT_FALSE(session->canAddInput({devices_.deviceWithUniqueID("card-audio")})) << "the card gives its sound";
    auto sound = std::make_shared<SoundCollector>();
    addOutput(*session, AVMediaType::audio, sound);
    Interruptions interruptions(*session);
    session->startRunning();
    ASSERT_TRUE(pictures_->waitForPictures(25));
    ASSERT_TRUE(sound->waitForFrames(24000));
    expectTrueTimes(seen(), camera->taken(), nanoseconds(0));
    EXPECT_LT(errorOfTime(sound->samples()), tolerableErrorOfTime);

    camera.reset();
    EXPECT_THAT(interruptions.waitFor(1),
                ElementsAre(std::pair(AVMediaType::muxed, std::string("The camera “card-video” was unplugged."))));
    DeviceWatcher(devices_, AVMediaType::muxed).waitUntilGone("capture-card:card-video");
    EXPECT_FALSE(card->isConnected());
    camera = std::make_unique<PipeWireTestCamera>(
        PipeWireTestCamera::Settings{.name = "card-video", .formats = {small}, .properties = place});
    EXPECT_EQ(interruptions.waitFor(2).back(), std::pair(AVMediaType::muxed, std::string()));
    EXPECT_TRUE(pictures_->waitForMorePictures(5));
    session->stopRunning();
    EXPECT_EQ(devices_.deviceWithUniqueID("capture-card:card-video"), card) << "while somebody holds it";
}

}  // namespace
}  // namespace zorvane
