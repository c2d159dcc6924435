// Recordings of cameras and phones on a scripted desktop, and what they show.
#pragma once

#include <string>
#include <vector>

#include "Zorvane/Platform/Virtual/VirtualCaptureDevices.hpp"
#include "tests/Support/SoundRecording.hpp"

namespace zorvane::testing {

/// A picture of a movie, both in seconds of the recording.
struct RecordedPicture {
    double shown;  ///< from when on
    double taken;  ///< by the clock in the picture, to the millisecond
    CMVideoDimensions size;
};

/// Beside the microphone a camera "cam", called "Desk Camera", and a phone "phone", called "Anna", into which the same
/// tone is whistled. Both see a clock.
class CameraRecordingTest : public SoundRecordingTest {
  protected:
    CameraRecordingTest();

    /// The pictures of a movie, the last of which only tells how long the one before it lasts.
    std::vector<RecordedPicture> pictures(std::size_t writer = 0, std::size_t track = 1) const;
    /// Each picture is shown when it was taken, but the first and the last, which are those of the moment: taken up to
    /// `interval` seconds before. None is missing.
    void expectInPlace(const std::vector<RecordedPicture>& pictures, double duration, double interval = 1.0 / 30);
    using SoundRecordingTest::expectInPlace;
    AVVideoSettings videoSettings(std::size_t writer = 0, std::size_t track = 1) const;
    void cover(const std::string& deviceID, bool isCovered);
};

}  // namespace zorvane::testing
