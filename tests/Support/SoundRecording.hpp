// Recordings of sound on a scripted desktop, and what they sound like.
#pragma once

#include <complex>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Zorvane/ZVRecorder.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/TemporaryDirectory.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane::testing {

/// The sound of one track of one channel, as a player would play it: clipped to its session, frame by frame.
class RecordedSound {
  public:
    double sampleRate = 0;
    double begin = 0;  ///< of the session, in seconds since the desktop was made
    /// Nothing where no sample lies.
    std::vector<std::optional<float>> frames;

    double duration() const { return static_cast<double>(frames.size()) / sampleRate; }
    /// Seconds of the recording without a sample.
    double missing() const;
    /// The loudest sample between two moments, in seconds of the recording.
    double peak(double from, double until) const;
    /// The amplitude of a tone.
    double loudness(double frequency, double from, double until) const;
    /// By how many seconds a tone is later than it was heard, judged by its phase: less than half its period.
    double delay(double frequency, double from, double until) const;

  private:
    /// The amplitude and the phase of a tone, against the time since the desktop was made.
    std::complex<double> component(double frequency, double from, double until) const;
};

/// A desktop with the microphone "mic", called "Desk Mic", into which 100 Hz are whistled, and a recorder that a test
/// makes.
class SoundRecordingTest : public VirtualWorldTest {
  protected:
    static constexpr double tone = 100;  // Hz: tells delays of less than 5 ms

    SoundRecordingTest() { plugMicrophone(); }

    void plugMicrophone(const AVAudioFormat& format = {AVAudioCommonFormat::float32, 48000, 1});
    void make(std::vector<ZVSchemaItem> items);
    void prepare() { clock->complete(recorder->prepare()); }
    void start() { clock->complete(recorder->start()); }
    ZVRecorder::Result stop() { return clock->complete(recorder->stop()); }
    /// Prepares, waits, and records for so long.
    ZVRecorder::Result record(std::vector<ZVSchemaItem> items, double seconds);
    /// What `prepare` throws: "group: text | user message".
    std::string failureToPrepare(std::vector<ZVSchemaItem> items);

    VirtualMovie movie(std::size_t writer = 0) const { return writing->writers().at(writer)->movie(); }
    RecordedSound sound(std::size_t writer = 0, std::size_t track = 0) const;
    /// The tone is there between two moments of the recording, and in its place to a millisecond.
    void expectInPlace(const RecordedSound& sound, double from, double until);
    /// "kind source" of each notice so far, and whether it has a reason.
    std::vector<std::string> notices() const;

    LogCapture log{ZVLogger::shared()};
    std::optional<ZVRecorder> recorder;

  private:
    TemporaryDirectory directory;
    mutable std::mutex mutex;
    std::vector<std::string> seenNotices;
    int recordings = 0;
};

}  // namespace zorvane::testing
