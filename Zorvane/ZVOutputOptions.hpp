// How a source's media reach the bundle: as one file, or as a stream of segments.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace zorvane {

/// One media file in the bundle.
struct ZVSingleFileOutput {
    /// Relative to the bundle directory, which it can't leave, and not "zorvane.json". The extension "mp4" makes it an
    /// MPEG-4 file, any other a QuickTime movie. Without a name it is called after its source, such as "display-5.mov".
    std::optional<std::string> filename = std::nullopt;
};

/// A stream of segment files in the bundle, which can be played and sent away while the recording goes on.
struct ZVSegmentedOutput {
    /// Hears of each segment file once it is complete. Called on a queue of the library, one call at a time. It may
    /// block, which holds up its own further calls and the end of `ZVRecorder::stop`, which comes after the last one;
    /// but it must not wait for an operation of the recorder. What it throws is logged.
    using SegmentCallback = std::function<void(const std::filesystem::path& segment)>;

    /// What the names of all segment files begin with. Without one they begin with the name of their source, such as
    /// "display-5".
    std::optional<std::string> filenamePrefix = std::nullopt;
    SegmentCallback segmentCallback = nullptr;
};

using ZVOutputForm = std::variant<ZVSingleFileOutput, ZVSegmentedOutput>;

/// A choice between the two. `Source` only keeps apart what is meant for different kinds of sources.
template <class Source>
class ZVOutputOptions {
  public:
    static ZVOutputOptions singleFile(std::optional<std::string> filename = std::nullopt) {
        return ZVOutputOptions(ZVSingleFileOutput{std::move(filename)});
    }
    static ZVOutputOptions segmented(ZVSegmentedOutput output = {}) { return ZVOutputOptions(std::move(output)); }

    const ZVOutputForm& form() const { return form_; }

  private:
    explicit ZVOutputOptions(ZVOutputForm form) : form_(std::move(form)) {}

    ZVOutputForm form_;
};

using ZVScreenRecordingOutputOptions = ZVOutputOptions<struct ScreenOutput>;
using ZVWebcamOutputOptions = ZVOutputOptions<struct WebcamOutput>;
using ZVAudioOutputOptions = ZVOutputOptions<struct AudioOutput>;
using ZVDeviceOutputOptions = ZVOutputOptions<struct DeviceOutput>;

}  // namespace zorvane
