// A host as it stands outside this repository: it has the installed headers and library, and nothing else. It records
// half a second of the virtual desktop into the directory it is given, which must not exist yet.
#include <Zorvane/Zorvane.hpp>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

namespace {

void require(bool condition, const std::string& text) {
    if (!condition) {
        throw std::runtime_error(text);
    }
}

zorvane::ZVRecorder makeRecorder(const std::filesystem::path& bundle, std::atomic<double>& secondsHeard) {
    const auto displays = zorvane::ZVDisplay::displays();
    require(displays.size() == 1, "the virtual desktop should have one display");
    const auto microphones = zorvane::ZVMicrophone::microphones();
    require(microphones.size() == 1, "the virtual desktop should have one microphone");
    const auto hear = [&secondsHeard](const zorvane::CMSampleBuffer& sample) {
        secondsHeard = secondsHeard + sample.audioBuffer()->frameLength() / sample.audioBuffer()->format().sampleRate;
        return true;
    };
    using Item = zorvane::ZVRecorder::SchemaItem;
    return zorvane::ZVRecorder(
        {Item::display(displays.front()->id(), {}, "screen.mov"), Item::_microphone(microphones.front()->id(), hear)},
        bundle);
}

void recordHalfASecond(const std::filesystem::path& bundle) {
    std::atomic<double> secondsHeard = 0;
    zorvane::ZVRecorder recorder = makeRecorder(bundle, secondsHeard);
    require(recorder.debugDescription() == "ZVRecorder: 2 recorder items", recorder.debugDescription());
    recorder.prepare().get();
    recorder.start().get();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const auto result = recorder.stop().get();

    require(result.bundleURL == bundle, "the bundle is elsewhere: " + result.bundleURL.string());
    require(std::filesystem::exists(bundle / "zorvane.json"), "there is no manifest");
    require(result.bundleInfo.files.size() == 1, "there should be one file");
    const auto statistics = recorder.statistics();
    const double recorded = statistics.recordUntil - statistics.recordFrom;
    const auto movie = zorvane::ZVMediaInfo::read(bundle / result.bundleInfo.files.front().filename);
    const double length = movie.duration.value_or(0);
    std::cout << "recorded " << recorded << " s into a movie of " << length << " s\n";
    require(secondsHeard >= recorded, "the sound should be as long as the recording");
    require(recorded >= 0.5 && std::abs(length - recorded) < 0.002, "the movie should be as long as the recording");
}

}  // namespace

int main(int argc, char** argv) {
    try {
        require(argc == 2, "usage: consumer BUNDLE");
        require(std::string_view(ZorvaneVersionString) == EXPECTED_VERSION, "built and run with different versions");
        zorvane::ZVPlatform::use(zorvane::ZVPlatformKind::virtualDesktop);
        recordHalfASecond(argv[1]);
        return EXIT_SUCCESS;
    } catch (...) {
        std::cerr << "consumer: " << zorvane::localizedDescription(std::current_exception()) << '\n';
        return EXIT_FAILURE;
    }
}
