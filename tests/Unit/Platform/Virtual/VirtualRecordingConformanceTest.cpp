#include "Zorvane/Platform/FFmpeg/FFmpegMediaWriting.hpp"
#include "tests/Conformance/RecordingConformance.hpp"
#include "tests/Support/VirtualWindows.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane::test {
namespace {

constexpr double tone = 440;
constexpr std::uint32_t darkWindow = 2;
constexpr std::uint32_t frontWindow = 3;

/// The virtual desktop in simulated time, with real files.
class VirtualRecordingBackend final : public RecordingBackend {
  public:
    VirtualRecordingBackend() {
        Platform::install(makeVirtualPlatform(desktop_, std::make_shared<FFmpegMediaWriting>()));
        desktop_->now()
            .setApplications({testing::someApplication})
            .setWindows({window(frontWindow, 200, VirtualColor::gray(0.2)), dark_})
            .plugDevice(VirtualDevice::microphone("mic", "Microphone"))
            .plugDevice(VirtualDevice::camera("cam", "Camera"))
            .plugDevice(VirtualDevice::phone("phone", "Phone"));
    }
    ~VirtualRecordingBackend() override { Platform::install(Platform()); }

    RecordingSources sources() override {
        return {.displayID = 77,
                .windowID = darkWindow,
                .microphoneID = "mic",
                .cameraID = "cam",
                .phoneID = "phone",
                .applicationID = testing::someApplication.processID};
    }

    Clap clap() override {
        VirtualWindow white = dark_;
        white.color = VirtualColor::white();
        desktop_->now()
            .paint(1, VirtualColor::white())
            .setWindows({white, window(frontWindow, 200, VirtualColor::gray(0.2))})
            .playTone(testing::someApplication.processID, tone)
            .playToMicrophone("mic", tone)
            .playToMicrophone("phone", tone)
            .flashAtCamera("cam", 100)
            .flashAtCamera("phone", 100)
            .pressKey({.keycode = 0, .characters = "a", .charactersIgnoringModifiers = "a"});
        const double now = std::chrono::duration<double>(clock_->now()).count();
        return {now, now};
    }
    /// A camera's next picture; a block of sound, that is heard at its end, is as long at most.
    double tolerance() const override { return 0.034; }

    void run(ZVTask<> task) override { clock_->complete(std::move(task)); }
    ZVRecorder::Result run(ZVTask<ZVRecorder::Result> task) override { return clock_->complete(std::move(task)); }
    void pass(double seconds) override {
        clock_->advance(std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds)));
    }

  private:
    static VirtualWindow window(std::uint32_t windowID, double x, const VirtualColor& color) {
        VirtualWindow made = testing::window(windowID, testing::someApplication, CGRect::make(x, 20, 100, 80));
        made.color = color;
        return made;
    }

    const std::shared_ptr<ManualClock> clock_ = std::make_shared<ManualClock>();
    const std::shared_ptr<VirtualDesktop> desktop_ = VirtualDesktop::make(
        clock_, {VirtualDisplay{.displayID = 1, .serialNumber = 77, .frame = CGRect::make(0, 0, 320, 240)}});
    const VirtualWindow dark_ = window(darkWindow, 20, VirtualColor::black());
};

std::unique_ptr<RecordingBackend> makeBackend() {
    return std::make_unique<VirtualRecordingBackend>();
}

using enum Recorded;
INSTANTIATE_TEST_SUITE_P(VirtualInSimulatedTime, RecordingConformance,
                         ::testing::ValuesIn(recordingCases(&makeBackend, {display, inputEvents, topWindows, windowCrop,
                                                                           webcam, microphone, microphoneStream,
                                                                           systemAudio, applicationAudio, phone})),
                         nameOfRecordingCase);

}  // namespace
}  // namespace zorvane::test
