#include "tests/Desktop/DisplayRecordingFixture.hpp"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <memory>
#include <ostream>
#include <sstream>

#include "Zorvane/Internal/Recorders/ScreenRecorder.hpp"
#include "Zorvane/Platform/CoreGraphics/CGDisplays.hpp"
#include "Zorvane/Platform/CoreMedia/CMClock.hpp"
#include "Zorvane/ZVPlatform.hpp"
#include "tests/Support/LogCapture.hpp"

namespace zorvane::testing {
namespace {

constexpr std::uint32_t black = 0x000000;
constexpr std::uint32_t white = 0xFFFFFF;
constexpr int lumaOfWhite = 235;
constexpr int lumaOfBlack = 16;
constexpr int encodingError = 6;

struct SizeCase {
    std::uint16_t width;
    std::uint16_t height;
    int movieWidth;
    int movieHeight;
    std::uint16_t border;  // pixels of the display
};

std::ostream& operator<<(std::ostream& stream, const SizeCase& size) {
    return stream << size.width << "x" << size.height;
}

class DisplaySizeTest : public DisplayRecordingTest, public ::testing::WithParamInterface<SizeCase> {
  protected:
    DisplaySizeTest()
        : DisplayRecordingTest(std::to_string(GetParam().width) + "x" + std::to_string(GetParam().height) + "x24") {}

    /// White within a black border at the right and at the bottom.
    void paint() {
        const auto [width, height, movieWidth, movieHeight, border] = GetParam();
        client_.fill({0, 0, width, height}, white);
        client_.fill({static_cast<std::int16_t>(width - border), 0, border, height}, black);
        client_.fill({0, static_cast<std::int16_t>(height - border), width, border}, black);
    }
};

TEST_P(DisplaySizeTest, IsRecordedToTheLastPixelOfItsEdges) {
    paint();
    ZVRecorder recorder = makeRecorder("bundle");
    begin(recorder);
    pass(0.2);
    const auto movie = pictures(movieOf(recorder.stop().get()));
    ASSERT_FALSE(movie.pictures.empty());
    const MoviePicture& picture = movie.pictures.back();
    const int right = GetParam().movieWidth - 1;
    const int bottom = GetParam().movieHeight - 1;
    ASSERT_EQ(picture.width, right + 1);
    ASSERT_EQ(picture.height, bottom + 1);
    EXPECT_NEAR(picture.lumaAt(0, 0), lumaOfWhite, encodingError);
    EXPECT_NEAR(picture.lumaAt(right, 0), lumaOfBlack, encodingError);
    EXPECT_NEAR(picture.lumaAt(0, bottom), lumaOfBlack, encodingError);
    EXPECT_NEAR(picture.lumaAt(right, bottom), lumaOfBlack, encodingError);
}

INSTANTIATE_TEST_SUITE_P(OfEachSize, DisplaySizeTest,
                         ::testing::Values(SizeCase{801, 601, 801, 601, 1}, SizeCase{64, 64, 64, 64, 1},
                                           SizeCase{16, 16, 16, 16, 1}, SizeCase{17, 9, 17, 9, 1},
                                           SizeCase{8000, 5000, 3686, 2304, 20}),
                         ::testing::PrintToStringParamName());

TEST_F(DisplayRecordingTest, AnOddCropIsRecordedToTheLastPixelOfItsEdges) {
    client_.fill({0, 0, 640, 480}, black);
    client_.fill({11, 7, 203, 101}, white);
    const CGDirectDisplayID displayID = Platform::current()->displays->activeDisplayList().at(0);
    const SCDisplay display{.displayID = displayID, .frame = CGRect::make(0, 0, 640, 480)};
    const auto interval = std::make_shared<VolatileRecordingInterval>();
    const LogCapture log;
    const auto path = directory_.path() / "crop.mov";
    ScreenRecorder recorder(
        {.id = "crop",
         .outputDescription = {OutputDescription::SingleFile{path}},
         .content = {.filter = {.display = display}, .display = display, .cropRect = CGRect::make(11, 7, 203, 101)},
         .showsCursor = false,
         .recordingInterval = StableRecordingInterval(interval),
         .logger = log.logger<DisplayRecordingTest>(),
         .onAbort = [](const AbortSignal&) {}});
    recorder.prepare().get();
    interval->start(hostTimeClockTime().seconds());
    pass(0.2);
    interval->stop(hostTimeClockTime().seconds());
    recorder.finish().get();

    const auto movie = pictures(path);
    ASSERT_FALSE(movie.pictures.empty());
    const MoviePicture& picture = movie.pictures.back();
    ASSERT_EQ(picture.width, 203);
    ASSERT_EQ(picture.height, 101);
    const auto [darkest, brightest] = std::minmax_element(picture.luma.begin(), picture.luma.end());
    EXPECT_NEAR(*darkest, lumaOfWhite, encodingError);
    EXPECT_NEAR(*brightest, lumaOfWhite, encodingError);
}

TEST_F(DisplayRecordingTest, TwoOfOneDisplayAtOnceAreBothWhole) {
    client_.fill({0, 0, 640, 480}, white);
    ZVRecorder first = makeRecorder("first");
    ZVRecorder second = makeRecorder("second");
    begin(first);
    begin(second);
    client_.fill({0, 0, 320, 480}, black);
    pass(0.3);
    for (ZVRecorder* recorder : {&first, &second}) {
        const auto movie = pictures(movieOf(recorder->stop().get()));
        EXPECT_NEAR(static_cast<double>(movie.duration) / movie.timescale, lengthOf(*recorder), 0.001);
        ASSERT_FALSE(movie.pictures.empty());
        EXPECT_NEAR(movie.pictures.back().lumaAt(100, 240), lumaOfBlack, encodingError);
        EXPECT_NEAR(movie.pictures.back().lumaAt(500, 240), lumaOfWhite, encodingError);
    }
}

TEST_F(DisplayRecordingTest, TwoOfTheVirtualDisplayAtOnceAreBothWhole) {
    ZVPlatform::use(ZVPlatformKind::virtualDesktop);
    ZVRecorder first = makeRecorder("first");
    ZVRecorder second = makeRecorder("second");
    begin(first);
    begin(second);
    pass(0.3);
    for (ZVRecorder* recorder : {&first, &second}) {
        const auto movie = readMovie(movieOf(recorder->stop().get()));
        EXPECT_NEAR(static_cast<double>(movie.duration) / movie.timescale, lengthOf(*recorder), 0.001);
        EXPECT_GT(movie.packets.size(), 1U);
    }
}

int entriesOf(const char* directory) {
    int count = 0;
    const std::unique_ptr<DIR, int (*)(DIR*)> open(opendir(directory), &closedir);
    while (readdir(open.get()) != nullptr) {
        ++count;
    }
    return count;
}

/// System V segments that this process made.
int sharedMemorySegments() {
    std::ifstream table("/proc/sysvipc/shm");
    std::string line;
    std::getline(table, line);
    int count = 0;
    while (std::getline(table, line)) {
        std::istringstream fields(line);
        std::string key, id, permissions, size;
        int creator = 0;
        fields >> key >> id >> permissions >> size >> creator;
        count += creator == getpid() ? 1 : 0;
    }
    return count;
}

/// A thread that has been told to end, or is left to itself, may take a moment to be gone.
::testing::AssertionResult comesDownTo(int expected, const std::function<int()>& count) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (count() > expected) {
        if (std::chrono::steady_clock::now() > deadline) {
            return ::testing::AssertionFailure() << count() << " where there were " << expected;
        }
        std::this_thread::yield();
    }
    return ::testing::AssertionSuccess();
}

TEST_F(DisplayRecordingTest, ManyInARowLeaveNothingBehind) {
    const auto recordMany = [&](const std::string& name, int count) {
        for (int index = 0; index < count; ++index) {
            ZVRecorder recorder = makeRecorder(name + std::to_string(index));
            begin(recorder);
            movieOf(recorder.stop().get());
        }
    };
    recordMany("first", 5);  // what lives as long as the process has come up
    const auto threads = [] { return entriesOf("/proc/self/task"); };
    const auto descriptors = [] { return entriesOf("/proc/self/fd"); };
    const int threadsBefore = threads();
    const int descriptorsBefore = descriptors();
    recordMany("more", 50);
    EXPECT_TRUE(comesDownTo(threadsBefore, threads));
    EXPECT_TRUE(comesDownTo(descriptorsBefore, descriptors));
    EXPECT_TRUE(comesDownTo(0, &sharedMemorySegments));
}

}  // namespace
}  // namespace zorvane::testing
