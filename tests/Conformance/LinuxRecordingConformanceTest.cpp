#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <numbers>
#include <thread>

#include "Zorvane/Platform/CoreGraphics/CGWindowList.hpp"
#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"
#include "benchmarks/clients/SoundClock.hpp"
#include "tests/Conformance/RecordingConformance.hpp"
#include "tests/Support/PipeWireTestCamera.hpp"
#include "tests/Support/PipeWireTestMicrophone.hpp"
#include "tests/Support/PrivateWindowManager.hpp"
#include "tests/Support/PrivateXServer.hpp"
#include "tests/Support/WaitUntil.hpp"
#include "tests/Support/X11TestClient.hpp"
#include "tests/Support/X11TestProgram.hpp"
#include "tests/Support/X11TestUser.hpp"

namespace zorvane::test {
namespace {

using std::chrono::nanoseconds;

constexpr const char* microphoneName = "conformance-microphone";
constexpr const char* cameraName = "conformance-camera";
constexpr std::uint32_t white = 0xFFFFFF;
constexpr std::uint8_t keyA = 38;
constexpr TestRect wholeWindow{0, 0, 120, 80};

nanoseconds now() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

/// What begins when somebody claps, and goes on: a light, and a tone.
class Clapper {
  public:
    void clapAt(nanoseconds time) { begin_ = time.count(); }
    bool hasClapped(nanoseconds time) const { return time.count() >= begin_; }
    float toneAt(nanoseconds time) const {
        constexpr double frequency = 500;
        const double turns = static_cast<double>(time.count() % 1'000'000'000) / 1e9 * frequency;
        return hasClapped(time) ? 0.5F * static_cast<float>(std::sin(2 * std::numbers::pi * turns)) : 0.0F;
    }

  private:
    std::atomic<std::int64_t> begin_ = std::numeric_limits<std::int64_t>::max();
};

/// A screen with two windows and a window manager, of the test's own, and the PipeWire of the environment. The camera
/// and the microphone are also the halves of a capture card, by which phones are recorded.
class LinuxRecordingBackend final : public RecordingBackend {
  public:
    LinuxRecordingBackend() {
        Platform::install(makeLinuxPlatform());
        player_.awaitPlaying();
        comeToFront(other_);
    }
    ~LinuxRecordingBackend() override { Platform::install(Platform()); }

    RecordingSources sources() override {
        return {.displayID = ZVDisplay::displays().at(0)->id(),
                .windowID = window_,
                .microphoneID = microphoneName,
                .cameraID = cameraName,
                .phoneID = std::string("capture-card:") + cameraName,
                .applicationID = getpid()};
    }

    Clap clap() override {
        const nanoseconds time = now() + std::chrono::milliseconds(100);
        clapper_.clapAt(time);
        std::this_thread::sleep_until(std::chrono::steady_clock::time_point(time));
        client_.fill({0, 0, 640, 480}, white);
        program_.fill(window_, wholeWindow, white);
        user_.type(keyA).act();
        comeToFront(window_);
        return {seconds(time), seconds(now())};
    }
    double tolerance() const override { return 0.1; }

    void run(ZVTask<> task) override { std::move(task).get(); }
    ZVRecorder::Result run(ZVTask<ZVRecorder::Result> task) override { return std::move(task).get(); }
    void pass(double seconds) override { std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); }

  private:
    static double seconds(nanoseconds time) { return std::chrono::duration<double>(time).count(); }

    void comeToFront(std::uint32_t window) {
        client_.askWindowManager(window, "_NET_ACTIVE_WINDOW", 2);
        waitUntil([window] {
            const auto windows = Platform::current()->windowList->create(CGWindowListOption::all, kCGNullWindowID);
            return windows && !windows->empty() && windows->front() == window;
        });
    }

    Clapper clapper_;
    const PrivateXServer server_;
    const PrivateWindowManager windowManager_;
    X11TestClient client_;
    X11TestUser user_;
    X11TestProgram program_{getpid()};
    const std::uint32_t window_ = program_.makeManagedWindow(wholeWindow, 0);
    const std::uint32_t other_ = program_.makeManagedWindow(wholeWindow, 0);
    const PipeWireTestMicrophone microphone_{{.name = microphoneName,
                                              .wave = [this](nanoseconds time) { return clapper_.toneAt(time); },
                                              .properties = {{"device.bus-path", "pci-0000:00:14.0-usb-0:2:1.3"}}}};
    const PipeWireTestCamera camera_{
        {.name = cameraName,
         .formats = {{.encoding = AVVideoSourceFormat::yuyv, .size = {320, 240}, .rate = {30, 1}}},
         .properties = {{"device.bus-path", "pci-0000:00:14.0-usb-0:2:1.0"},
                        {"device.product.name", "USB HDMI Capture"}},
         .isFlash = [this](nanoseconds time) { return clapper_.hasClapped(time); }}};
    benchmarks::SoundPlayer player_{
        [this](nanoseconds time) { return clapper_.toneAt(time); },
        {.properties = {{"client.api", "pipewire-pulse"}, {"application.process.id", std::to_string(getpid())}}}};
};

std::unique_ptr<RecordingBackend> makeBackend() {
    return std::make_unique<LinuxRecordingBackend>();
}

using enum Recorded;
INSTANTIATE_TEST_SUITE_P(Linux, RecordingConformance,
                         ::testing::ValuesIn(recordingCases(&makeBackend, {display, inputEvents, topWindows, windowCrop,
                                                                           webcam, microphone, microphoneStream,
                                                                           systemAudio, applicationAudio, phone})),
                         nameOfRecordingCase);

}  // namespace
}  // namespace zorvane::test
