#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>

#include "Zorvane/Internal/Recorders/CursorRecorder/CursorRecorder.hpp"
#include "Zorvane/Platform/CoreGraphics/CGEvents.hpp"
#include "Zorvane/Platform/CoreVideo/CVDisplayLink.hpp"
#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"
#include "Zorvane/Platform/Platform.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/PrivateXServer.hpp"
#include "tests/Support/WaitUntil.hpp"
#include "tests/Support/X11TestClient.hpp"

namespace zorvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

class X11DisplayLinkTest : public testing::Test {
  protected:
    ~X11DisplayLinkTest() override { link->stop(); }

    void start() {
        link->setOutputHandler([this] {
            const auto pointer = platform.events->create();
            lastX = pointer ? pointer->location.x : -1;
            ++calls;
            return kCVReturnSuccess;
        });
        ASSERT_EQ(link->start(), kCVReturnSuccess);
    }
    /// A link that doesn't rest never gets through here.
    void waitUntilItRests(milliseconds duration = milliseconds(250)) {
        waitUntil([&] {
            const int before = calls;
            std::this_thread::sleep_for(duration);
            return calls == before;
        });
    }
    void expectCallAfter(const std::function<void()>& change) {
        waitUntilItRests();
        const int before = calls;
        change();
        waitUntil([&] { return calls > before; });
    }

    PrivateXServer server;
    X11TestClient client;
    Platform platform = makeLinuxPlatform();
    std::atomic<int> calls = 0;
    std::atomic<double> lastX = -1;  // -1 if the server wasn't there
    std::unique_ptr<CVDisplayLink> link = platform.displayLinks->createWithActiveCGDisplays().link;
};

TEST_F(X11DisplayLinkTest, ItRestsUntilPointerOrCursorChangeAndCallsOnceMoreAfterTheLastChange) {
    start();
    waitUntil([&] { return calls > 0; });
    expectCallAfter([&] { client.movePointer(100, 100); });
    expectCallAfter([&] { client.setSquareCursor(10, 0xFF0000); });
    for (std::int16_t x = 0; x <= 500; ++x) {
        client.movePointer(x, 50);
    }
    waitUntil([&] { return lastX == 500; });
}

TEST_F(X11DisplayLinkTest, ItKeepsTheRateOfItsDisplay) {
    client.resizeScreen(320, 240, 20);
    waitUntil([&] {
        const auto mode = platform.displays->displayMode(link->currentCGDisplay());
        return mode && mode->refreshRate == 20;
    });
    start();
    const auto begin = steady_clock::now();
    for (std::int16_t x = 0; steady_clock::now() - begin < std::chrono::seconds(1); ++x) {
        client.movePointer(static_cast<std::int16_t>(x % 300), 50);
    }
    link->stop();
    const std::chrono::duration<double> taken = steady_clock::now() - begin;
    EXPECT_LE(calls, taken.count() * 20 + 2);
    EXPECT_GT(calls, 1);
}

TEST_F(X11DisplayLinkTest, ItFollowsTheServerThatGoesAndComes) {
    start();
    expectCallAfter([&] { server.kill(); });
    waitUntil([&] { return lastX == -1; });
    server.restart();
    waitUntil([&] { return lastX >= 0; });
    waitUntilItRests(milliseconds(2500));  // attempts to reach a server are no further apart than two seconds
}

TEST_F(X11DisplayLinkTest, ItStopsWhileTheServerHangs) {
    start();
    waitUntil([&] { return calls > 0; });
    waitUntilItRests();
    server.suspend();
    EXPECT_EQ(link->stop(), kCVReturnSuccess);
    server.resume();
    const int before = calls;
    EXPECT_EQ(link->start(), kCVReturnSuccess);
    waitUntil([&] { return calls > before; });
}

TEST_F(X11DisplayLinkTest, OperationsThatDontFitAreRefused) {
    EXPECT_EQ(link->start(), kCVReturnDisplayLinkCallbacksNotSet);
    EXPECT_EQ(link->stop(), kCVReturnDisplayLinkNotRunning);
    EXPECT_EQ(link->setCurrentCGDisplay(link->currentCGDisplay() + 1), kCVReturnInvalidDisplay);
    std::atomic<int> stopped = 0;
    link->setOutputHandler([&] {
        link->stop();  // inside itself
        ++stopped;
        return kCVReturnSuccess;
    });
    for (int run = 1; run <= 3; ++run) {
        EXPECT_EQ(link->start(), kCVReturnSuccess);
        waitUntil([&] { return stopped == run; });
    }
}

/// A recorder on a real server.
class X11CursorRecorderTest : public testing::Test {
  protected:
    X11CursorRecorderTest() { Platform::install(makeLinuxPlatform()); }
    ~X11CursorRecorderTest() override { Platform::install(Platform()); }

    const PrivateXServer server;
    X11TestClient client;
    LogCapture log;
};

TEST_F(X11CursorRecorderTest, CursorsAreFoundWhenTheyWereShownAndTheLinkFollowsThePointer) {
    client.setMonitor("left", {0, 0, 320, 480}, true, true);
    client.setMonitor("right", {320, 0, 320, 480}, false, false);
    client.setThemeCursor("default");
    client.movePointer(10, 10);
    CursorRecorder recorder("Ab3", log.logger<X11CursorRecorderTest>());
    recorder.prepare().get();
    const auto seen = [&] {
        return recorder.timeline()->observations(kCMTimeNegativeInfinity, kCMTimePositiveInfinity);
    };
    waitUntil([&] { return seen().size() == 1; });
    EXPECT_EQ(seen()[0].cursorType, ZVCursorType::arrow);

    client.setThemeCursor("pointer");
    client.movePointer(400, 10);
    waitUntil([&] { return seen().size() == 2; });
    EXPECT_EQ(seen()[1].cursorType, ZVCursorType::pointingHand);
    EXPECT_EQ(seen()[1].location, (CGPoint{400, 10}));
    waitUntil([&] { return log.count(ZVLogLevel::debug, "Switched link to display containing mouse location.") > 0; });

    client.setSquareCursor(9, 0x0000FF);
    client.movePointer(401, 10);
    EXPECT_TRUE(recorder.finish().get().empty());
    ASSERT_EQ(seen().size(), 3U) << "the last look sees what the server showed by then";
    EXPECT_TRUE(seen()[2].cursorId.starts_with("custom-"));
}

}  // namespace
}  // namespace zorvane
