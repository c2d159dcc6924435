#include "tests/Support/CameraRecording.hpp"

namespace zorvane::testing {
namespace {

constexpr double readable = 0.0012;  // seconds to which the clock in a picture tells the time

}  // namespace

CameraRecordingTest::CameraRecordingTest() {
    desktop->now().plugDevice(VirtualDevice::camera("cam", "Desk Camera"));
    desktop->now().plugDevice(VirtualDevice::phone("phone", "Anna")).playToMicrophone("phone", tone);
}

std::vector<RecordedPicture> CameraRecordingTest::pictures(std::size_t writer, std::size_t track) const {
    const VirtualMovie written = movie(writer);
    const double begin = recorder->statistics().recordFrom - hostSeconds(0);
    std::vector<RecordedPicture> pictures;
    for (const VirtualSampleRecord& sample : written.tracks.at(track).samples) {
        pictures.push_back({(sample.presentationTimeStamp - *written.sessionStart).seconds(),
                            sample.frameNumber.value_or(0) / 1000.0 - begin, sample.dimensions});
    }
    return pictures;
}

void CameraRecordingTest::expectInPlace(const std::vector<RecordedPicture>& pictures, double duration,
                                        double interval) {
    ASSERT_GE(pictures.size(), 2u);
    for (const std::size_t end : {std::size_t{0}, pictures.size() - 1}) {
        EXPECT_NEAR(pictures[end].shown, end == 0 ? 0 : duration, 1e-6);
        EXPECT_LE(pictures[end].taken, pictures[end].shown + readable);
        EXPECT_GE(pictures[end].taken, pictures[end].shown - interval - readable);
    }
    for (std::size_t index = 1; index < pictures.size() - 1; ++index) {
        EXPECT_NEAR(pictures[index].shown, pictures[index].taken, readable);
    }
    EXPECT_NEAR(static_cast<double>(pictures.size()), duration / interval + 2, 1.01);
}

AVVideoSettings CameraRecordingTest::videoSettings(std::size_t writer, std::size_t track) const {
    return movie(writer).tracks.at(track).videoSettings.value();
}

void CameraRecordingTest::cover(const std::string& deviceID, bool isCovered) {
    desktop->now().changeCamera(deviceID, [isCovered](VirtualCamera& camera) { camera.isCovered = isCovered; });
}

}  // namespace zorvane::testing
