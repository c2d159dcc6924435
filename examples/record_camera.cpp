// A host written in coroutines: records the camera and the microphone in use, as one movie, beside the main display.
//
//     record_camera [--virtual] [SECONDS]
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "Zorvane/Zorvane.hpp"

using namespace zorvane;

namespace {

/// What the host wants to know while it records; here the seconds that are left.
using Countdown = ZVAsyncStream<int>;

std::vector<ZVRecorder::SchemaItem> sources() {
    const std::shared_ptr<ZVCamera> camera = ZVCamera::preferred();
    const std::shared_ptr<ZVMicrophone> microphone = ZVMicrophone::preferred();
    if (!camera || !microphone) {
        throw ZVError::invalidConfiguration("There is no camera, or no microphone to go with it.");
    }
    std::vector<ZVRecorder::SchemaItem> items{
        ZVRecorder::SchemaItem::webcam(microphone->id(), camera->id(), "speaker.mov")};
    for (const auto& display : ZVDisplay::displays()) {
        if (display->isMain()) {
            items.push_back(ZVRecorder::SchemaItem::display(display->id(), {}, "slides.mov"));
        }
    }
    return items;
}

ZVTask<ZVRecorder::Result> recordWhile(Countdown countdown) {
    ZVRecorder recorder(sources());
    co_await recorder.prepare();  // the camera's light goes on; takes a second or two
    co_await recorder.start();
    while (const auto secondsLeft = co_await countdown.next()) {
        std::cerr << *secondsLeft << " s left, " << recorder.statistics().framesWritten << " pictures\n";
    }
    ZVRecorder::Result result = co_await recorder.stop();
    co_return result;
}

void count(int seconds, const Countdown::Source& countdown) {
    for (; seconds > 0; --seconds) {
        countdown.yield(seconds);
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
    countdown.finish();
}

ZVRecorder::Result record(int seconds) {
    auto [countdown, source] = Countdown::make(ZVStreamBuffering::unbounded());
    std::jthread timer(count, seconds, source);
    return recordWhile(std::move(countdown)).get();
}

}  // namespace

int main(int argc, char** argv) {
    int seconds = 3;
    for (int index = 1; index < argc; ++index) {
        if (argv[index] == std::string_view("--virtual")) {
            ZVPlatform::use(ZVPlatformKind::virtualDesktop);
        } else {
            seconds = std::atoi(argv[index]);
        }
    }
    try {
        std::cout << record(seconds).bundleURL.string() << '\n';
        return EXIT_SUCCESS;
    } catch (...) {
        std::cerr << localizedDescription(std::current_exception()) << '\n';
        return EXIT_FAILURE;
    }
}
