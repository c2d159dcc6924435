#include "tests/Support/SoundRecording.hpp"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <numbers>

namespace zorvane::testing {
namespace {

float firstChannel(const AVAudioPCMBuffer& pcm, std::size_t frame) {
    const std::byte* at = pcm.bytes().data() + frame * pcm.format().bytesPerFrame();
    const auto read = [at](auto value) {
        std::memcpy(&value, at, sizeof(value));
        return value;
    };
    switch (pcm.format().commonFormat) {
        case AVAudioCommonFormat::int16:
            return static_cast<float>(read(std::int16_t{})) / 32768.0F;
        case AVAudioCommonFormat::int32:
            return static_cast<float>(read(std::int32_t{})) / 2147483648.0F;
        case AVAudioCommonFormat::float32:
            return read(float{});
    }
    return 0;
}

}  // namespace

double RecordedSound::missing() const {
    return static_cast<double>(std::ranges::count(frames, std::optional<float>())) / sampleRate;
}

double RecordedSound::peak(double from, double until) const {
    float peak = 0;
    for (auto frame = static_cast<std::size_t>(from * sampleRate); frame < until * sampleRate; ++frame) {
        peak = std::max(peak, std::abs(frames.at(frame).value_or(0)));
    }
    return peak;
}

std::complex<double> RecordedSound::component(double frequency, double from, double until) const {
    std::complex<double> sum = 0;
    for (auto frame = static_cast<std::size_t>(from * sampleRate); frame < until * sampleRate; ++frame) {
        const double time = begin + static_cast<double>(frame) / sampleRate;
        sum += static_cast<double>(frames.at(frame).value_or(0)) *
               std::polar(1.0, -2 * std::numbers::pi * frequency * time);
    }
    return 2.0 * sum / ((until - from) * sampleRate);
}

double RecordedSound::loudness(double frequency, double from, double until) const {
    return std::abs(component(frequency, from, until));
}

double RecordedSound::delay(double frequency, double from, double until) const {
    const double phase = std::arg(component(frequency, from, until)) + std::numbers::pi / 2;  // of a sine
    return -phase / (2 * std::numbers::pi * frequency);
}

void SoundRecordingTest::plugMicrophone(const AVAudioFormat& format) {
    desktop->now().plugDevice(VirtualDevice::microphone("mic", "Desk Mic", format)).playToMicrophone("mic", tone);
}

void SoundRecordingTest::make(std::vector<ZVSchemaItem> items) {
    recorder.emplace(std::move(items), directory.path() / std::to_string(recordings++));
    auto note = [this](const ZVRecorder::Notice& notice) {
        const bool isInterruption = notice.kind == ZVRecorder::Notice::Kind::sourceInterrupted;
        const std::lock_guard lock(mutex);
        seenNotices.push_back((isInterruption ? "interrupted " : "resumed ") + notice.source +
                              (notice.reason ? " for a reason" : ""));
    };
    clock->complete(recorder->setNoticeHandler(std::move(note)));
}

ZVRecorder::Result SoundRecordingTest::record(std::vector<ZVSchemaItem> items, double seconds) {
    make(std::move(items));
    prepare();
    advance(0.5);
    start();
    advance(seconds);
    return stop();
}

std::string SoundRecordingTest::failureToPrepare(std::vector<ZVSchemaItem> items) {
    make(std::move(items));
    try {
        prepare();
        return "prepared";
    } catch (const ZVError& error) {
        return error.errorGroup() + " | " + error.userMessage().value_or("");
    }
}

RecordedSound SoundRecordingTest::sound(std::size_t writer, std::size_t track) const {
    const VirtualMovie written = movie(writer);
    const VirtualTrackRecord& record = written.tracks.at(track);
    RecordedSound recorded;
    recorded.begin = written.sessionStart->seconds() - hostSeconds(0);
    recorded.sampleRate = record.samples.empty() ? 48000 : record.samples.front().sound->format().sampleRate;
    const double duration = (*written.sessionEnd - *written.sessionStart).seconds();
    recorded.frames.resize(static_cast<std::size_t>(std::llround(duration * recorded.sampleRate)));
    for (const VirtualSampleRecord& sample : record.samples) {
        const double offset = (sample.presentationTimeStamp - *written.sessionStart).seconds() * recorded.sampleRate;
        for (std::int64_t frame = 0; frame < sample.numSamples; ++frame) {
            const auto place = std::llround(offset) + frame;
            if (place >= 0 && place < static_cast<std::int64_t>(recorded.frames.size())) {
                recorded.frames[static_cast<std::size_t>(place)] =
                    firstChannel(*sample.sound, static_cast<std::size_t>(frame));
            }
        }
    }
    return recorded;
}

void SoundRecordingTest::expectInPlace(const RecordedSound& sound, double from, double until) {
    EXPECT_NEAR(sound.peak(from, until), VirtualMicrophone::amplitude, 0.02) << "from " << from;
    EXPECT_NEAR(sound.delay(tone, from, until), 0, 0.001) << "from " << from;
}

std::vector<std::string> SoundRecordingTest::notices() const {
    const std::lock_guard lock(mutex);
    return seenNotices;
}

}  // namespace zorvane::testing
