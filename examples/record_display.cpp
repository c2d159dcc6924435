// A host that blocks: records the main display for a few seconds and says where the bundle is.
//
//     record_display [--virtual] [SECONDS]
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string_view>
#include <thread>

#include "Zorvane/Zorvane.hpp"

using namespace zorvane;

namespace {

ZVRecorder::Result recordMainDisplay(std::chrono::duration<double> duration) {
    const auto displays = ZVDisplay::displays();
    const auto main = std::ranges::find_if(displays, [](const auto& display) { return display->isMain(); });
    if (main == displays.end()) {
        throw ZVError::invalidConfiguration("There is no main display.");
    }
    ZVRecorder recorder({ZVRecorder::SchemaItem::display((*main)->id(), {.includeAudio = false}, "screen.mov")});
    recorder.prepare().get();
    recorder.start().get();
    std::this_thread::sleep_for(duration);
    return recorder.stop().get();
}

}  // namespace

int main(int argc, char** argv) {
    double seconds = 3;
    for (int index = 1; index < argc; ++index) {
        if (argv[index] == std::string_view("--virtual")) {
            ZVPlatform::use(ZVPlatformKind::virtualDesktop);
        } else {
            seconds = std::atof(argv[index]);
        }
    }
    try {
        const ZVRecorder::Result result = recordMainDisplay(std::chrono::duration<double>(seconds));
        std::cout << result.bundleURL.string() << '\n';
        for (const auto& file : result.bundleInfo.files) {
            std::cout << "  " << rawValue(file.type) << ' ' << file.filename << '\n';
        }
        return EXIT_SUCCESS;
    } catch (...) {
        std::cerr << localizedDescription(std::current_exception()) << '\n';
        return EXIT_FAILURE;
    }
}
