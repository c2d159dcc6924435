// What a host wants captured, as plain descriptions: one item for each source.
#pragma once

#include <compare>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Zorvane/ZVColorSpace.hpp"
#include "Zorvane/ZVOutputOptions.hpp"

namespace zorvane {

class CMSampleBuffer;
class InteralSchemaItem;

/// What a display's picture leaves out.
enum class ZVScreenRecordingExcludeOptions {
    currentProcess,  ///< this process's windows
    /// The mark by which the desktop shows that it is being recorded. Leaves nothing out on Linux: its desktops show
    /// their marks, if any, in panels that can't be told from others.
    screenRecordingIndicator,
};

/// Whose sound a recording of the system leaves out: one process.
class ZVSystemAudioExcludeOptions {
  public:
    static ZVSystemAudioExcludeOptions processID(std::int32_t processID) {
        return ZVSystemAudioExcludeOptions(processID);
    }
    static ZVSystemAudioExcludeOptions currentProcess() { return ZVSystemAudioExcludeOptions(std::nullopt); }

    /// Absent for the current process.
    const std::optional<std::int32_t>& processID() const { return processID_; }

    auto operator<=>(const ZVSystemAudioExcludeOptions&) const = default;

  private:
    explicit ZVSystemAudioExcludeOptions(std::optional<std::int32_t> processID) : processID_(processID) {}

    std::optional<std::int32_t> processID_;
};

/// What is recorded of a window's surroundings.
struct ZVWindowBasedCropOptions {
    ZVColorSpace colorSpace = ZVColorSpace::sRGB;
    bool showsCursor = true;
    /// Writes a side file of what the mouse does.
    bool mouseEvents = false;
    /// Writes what the keyboard does to the same side file.
    bool keyboardEvents = false;
};

/// What is recorded of a display.
struct ZVDisplayOptions {
    std::set<ZVScreenRecordingExcludeOptions> excluding = {};
    ZVColorSpace colorSpace = ZVColorSpace::sRGB;
    bool showsCursor = true;
    /// Writes a side file of what the mouse does.
    bool mouseEvents = false;
    /// Writes what the keyboard does to the same side file.
    bool keyboardEvents = false;
    /// Adds the system's sound to the picture's file.
    bool includeAudio = false;
};

/// One source to capture. Pure description: making one touches no file and checks nothing; whether the source exists
/// and can be recorded shows in `ZVRecorder::prepare`. The same source may stand in a schema twice.
///
/// Every factory comes in two forms: with the name of a single file, or with output options.
class ZVSchemaItem {
  public:
    using Filename = std::optional<std::string>;

    /// A camera with the sound of a microphone.
    static ZVSchemaItem webcam(std::string microphoneID, std::string cameraID, Filename filename = std::nullopt);
    static ZVSchemaItem webcam(std::string microphoneID, std::string cameraID, ZVWebcamOutputOptions output);

    static ZVSchemaItem microphone(std::string microphoneID, Filename filename = std::nullopt);
    static ZVSchemaItem microphone(std::string microphoneID, ZVAudioOutputOptions output);

    /// Takes one sample of sound: interleaved frames with their time on the host clock. True: the host has taken it,
    /// and may keep it. False: the host isn't ready; it is offered the same sample again, with the next one that comes.
    /// Called one at a time, on the capture's own queue and at the end on the one that finishes; it must not block.
    using SampleCallback = std::function<bool(const CMSampleBuffer& sample)>;
    /// Hands a microphone's sound to the host; writes no file. The first sample holds the recording's start, or comes
    /// before it; every sample begins where the one before has ended, with silence in the gaps.
    /// `ZVRecorder::stop` ends once the host has taken all of it, and so does an abort.
    static ZVSchemaItem _microphone(std::string microphoneID, SampleCallback callback);

    /// The sound of all applications but the excluded ones.
    static ZVSchemaItem systemAudio(std::set<ZVSystemAudioExcludeOptions> excluding = {},
                                    Filename filename = std::nullopt);
    static ZVSchemaItem systemAudio(std::set<ZVSystemAudioExcludeOptions> excluding, ZVAudioOutputOptions output);
    /// The sound of these applications, mixed.
    static ZVSchemaItem systemAudio(std::vector<std::int32_t> includedApplicationIDs, Filename filename = std::nullopt);
    static ZVSchemaItem systemAudio(std::vector<std::int32_t> includedApplicationIDs, ZVAudioOutputOptions output);
    /// The sound of one application.
    static ZVSchemaItem applicationAudio(std::int32_t applicationID, Filename filename = std::nullopt);
    static ZVSchemaItem applicationAudio(std::int32_t applicationID, ZVAudioOutputOptions output);

    /// A whole display. `displayID` is a `ZVDisplay`'s `id`: the number by which it is known after it was unplugged.
    static ZVSchemaItem display(std::uint32_t displayID, ZVDisplayOptions options = {},
                                Filename filename = std::nullopt);
    static ZVSchemaItem display(std::uint32_t displayID, ZVDisplayOptions options,
                                ZVScreenRecordingOutputOptions output);
    /// With `topWindowInfo`, also writes a side file that says which window was frontmost, and when.
    static ZVSchemaItem _display(std::uint32_t displayID, ZVDisplayOptions options, bool topWindowInfo,
                                 ZVScreenRecordingOutputOptions output);

    /// The area of the screen where a window stands at preparation. Of what lies there only the window shows, whatever
    /// covers it, on black. The area stays where it is when the window is moved.
    static ZVSchemaItem windowBasedCrop(std::uint32_t windowID, ZVWindowBasedCropOptions options = {},
                                        Filename filename = std::nullopt);
    static ZVSchemaItem windowBasedCrop(std::uint32_t windowID, ZVWindowBasedCropOptions options,
                                        ZVScreenRecordingOutputOptions output);

    /// The screen of a connected phone or tablet, in the orientation it has at preparation.
    static ZVSchemaItem appleDeviceStaticOrientation(std::string deviceID, Filename filename = std::nullopt);
    static ZVSchemaItem appleDeviceStaticOrientation(std::string deviceID, ZVDeviceOutputOptions output);

    explicit ZVSchemaItem(InteralSchemaItem internalItem);
    const InteralSchemaItem& internalItem() const { return *internalItem_; }

    /// One line for logs: the kind of item and what names its source.
    std::string debugDescription() const;

  private:
    std::shared_ptr<const InteralSchemaItem> internalItem_;
};

/// All that one recording is to capture, and where to.
struct ZVSchema {
    /// The bundle directory, which must not exist yet; without one the recording makes its own.
    std::optional<std::filesystem::path> outputDirectory = std::nullopt;
    std::vector<ZVSchemaItem> items = {};

    /// One line for logs.
    std::string debugDescription() const;
};

}  // namespace zorvane
