// Writes the sound of the first microphone to standard output as it comes, and how loud it is to standard error.
//
//     stream_microphone [--virtual] [SECONDS] > sound.raw
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string_view>
#include <thread>

#include "Zorvane/Zorvane.hpp"

using namespace zorvane;

namespace {

/// Called on the capture's own queue. Standard output may block for a moment: sound that comes meanwhile waits.
bool writeSound(const CMSampleBuffer& sample) {
    const auto bytes = sample.audioBuffer()->bytes();
    std::cout.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return true;  // taken; a host that can't take it yet returns false and is asked again
}

void showLevel(const ZVRecorder& recorder) {
    for (const ZVRecorder::SoundLevel& level : recorder.statistics().soundLevels) {
        std::cerr << '\r' << level.name << ": " << static_cast<int>(100 * level.peak) << " %   " << std::flush;
    }
}

void showNotice(const ZVRecorder::Notice& notice) {
    std::cerr << "\n" + notice.userMessage + "\n";
}

void streamMicrophone(double seconds) {
    const auto microphones = ZVMicrophone::microphones();
    if (microphones.empty()) {
        throw ZVError::invalidConfiguration("There is no microphone.");
    }
    ZVRecorder recorder({ZVRecorder::SchemaItem::_microphone(microphones.front()->id(), writeSound)});
    recorder.setNoticeHandler(showNotice).get();
    recorder.start().get();
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        showLevel(recorder);
    }
    recorder.stop().get();
    std::cerr << '\n';
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
        streamMicrophone(seconds);
        return EXIT_SUCCESS;
    } catch (...) {
        std::cerr << localizedDescription(std::current_exception()) << '\n';
        return EXIT_FAILURE;
    }
}
