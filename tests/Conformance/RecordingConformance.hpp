// What recordings of every kind of source are tested for, through the public interface. A backend lends its world:
//
//     INSTANTIATE_TEST_SUITE_P(Virtual, RecordingConformance, recordingCases(&makeBackend, {Recorded::display}),
//                              nameOfRecordingCase);
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Zorvane/ZVRecorder.hpp"

namespace zorvane::test {

/// What is recorded: a kind of source, or a display for the sake of its side file.
enum class Recorded : std::uint8_t {
    display,
    inputEvents,
    topWindows,
    windowCrop,
    webcam,
    microphone,
    microphoneStream,
    systemAudio,
    applicationAudio,
    phone,  ///< or a capture card
};

/// The sources of a world; those that it doesn't have stay empty. The display is dark, the window on it too and not the
/// one in front, and all is silent, until somebody claps.
struct RecordingSources {
    std::uint32_t displayID = 0;
    std::uint32_t windowID = 0;
    std::string microphoneID;
    std::string cameraID;
    std::string phoneID;
    std::int32_t applicationID = 0;
};

/// When something happened, in seconds on the host clock.
struct Clap {
    double earliest = 0;
    double latest = 0;
};

/// A world that the current platform, of the backend's choice, records. Only one exists at a time.
class RecordingBackend {
  public:
    virtual ~RecordingBackend() = default;

    virtual RecordingSources sources() = 0;
    /// Something that no source can miss, once: the display's middle and the window become white, pictures of cameras
    /// too, everybody plays a loud tone, a key is pressed, the window comes to the front. All of it goes on.
    virtual Clap clap() = 0;
    /// How far from the clap its traces may stand in a file, in seconds.
    virtual double tolerance() const = 0;

    /// Does the task; returns or throws what it does.
    virtual void run(ZVTask<> task) = 0;
    virtual ZVRecorder::Result run(ZVTask<ZVRecorder::Result> task) = 0;
    /// Lets this much time go by.
    virtual void pass(double seconds) = 0;
};

struct RecordingCase {
    std::unique_ptr<RecordingBackend> (*makeBackend)() = nullptr;
    Recorded recorded = Recorded::display;
};

/// One for each kind that the backend has.
std::vector<RecordingCase> recordingCases(std::unique_ptr<RecordingBackend> (*makeBackend)(),
                                          const std::vector<Recorded>& kinds);
std::string nameOfRecordingCase(const ::testing::TestParamInfo<RecordingCase>& info);

class RecordingConformance : public ::testing::TestWithParam<RecordingCase> {
  protected:
    const std::unique_ptr<RecordingBackend> backend_ = GetParam().makeBackend();
};

}  // namespace zorvane::test
