// The output of a recorder of media, from its writers' set-up to the list of its files.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Internal/AbortSignal.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/Recorders/AudioSamplePath.hpp"
#include "Zorvane/Internal/Recorders/MasterPlaylist.hpp"
#include "Zorvane/Internal/Recorders/OutputAssetWriters.hpp"
#include "Zorvane/Internal/Recorders/WriterSession.hpp"
#include "Zorvane/Internal/RecordingInterval.hpp"
#include "Zorvane/Internal/SourceNotices.hpp"
#include "Zorvane/Platform/AVFoundation/AVMediaType.hpp"
#include "Zorvane/Platform/AVFoundation/AVOutputSettings.hpp"
#include "Zorvane/ZVBundleInfo.hpp"

namespace zorvane {

/// Made in a recorder's construction or preparation: made, inputs added, started. Then samples go to the inputs, and
/// whichever comes first opens the session. `finish` closes everything at `recordUntil`.
///
/// Used by one thread at a time.
class MediaOutput {
  public:
    /// `media` are the kinds of media that will be written, whose writers' errors end the recording: `onAbort` hears of
    /// each. `startingQueueLabel` names the queue that opens the session.
    MediaOutput(std::shared_ptr<OutputAssetWriters> writers, const std::vector<AVMediaType>& media,
                std::string startingQueueLabel, const Logger& logger, const AbortHandler& onAbort);

    /// Adds an input for media that comes as it happens. Logs `refusal` and throws it as a `ZVError` (internal error)
    /// when the writer doesn't take it.
    std::shared_ptr<AVAssetWriterInput> addVideoInput(const AVVideoSettings& settings);
    std::shared_ptr<AVAssetWriterInput> addAudioInput(
        const AVAudioSettings& settings, std::string_view refusal = "Can't add audio input to asset writer.");

    /// Throws a writer's error when it can't start.
    void startWriting() { writers_->startWriting(); }

    /// The end of a sample path that leads to an input of this output.
    std::unique_ptr<AudioSampleSink> makeSink(std::shared_ptr<AVAssetWriterInput> audioInput) const;

    const std::shared_ptr<OutputAssetWriters>& writers() const { return writers_; }
    const std::shared_ptr<WriterSession>& session() const { return session_; }

    /// Ends the session, finalises the files and lists them. A recording in which nothing came gets files of its length
    /// all the same. Once, when no more samples come and all are flushed. Throws what spoilt a file.
    Task<std::vector<ZVBundleInfo::FileAsset>> finish(ZVBundleInfo::FileAssetType type,
                                                      StableRecordingInterval interval);

  private:
    void observeErrors(AVMediaType mediaType, const AbortHandler& onAbort);
    std::shared_ptr<AVAssetWriterInput> add(std::shared_ptr<AVAssetWriterInput> input, std::string_view refusal);
    AVAssetWriter& writer(AVMediaType mediaType) const;
    void endSession(StableRecordingInterval interval);

    const Logger logger_;
    const std::shared_ptr<OutputAssetWriters> writers_;
    const std::shared_ptr<WriterSession> session_;
    std::vector<AVAssetWriter::ErrorObservation> errorObservations_;
    std::vector<std::shared_ptr<AVAssetWriterInput>> inputs_;
};

/// The playlist of sound alone, whose track has this name for people.
MasterPlaylist soundPlaylist(const AVAudioSettings& settings, std::string_view trackName);

/// The same with pictures beside it, whose track has this name for people.
MasterPlaylist withPictures(MasterPlaylist playlist, const AVVideoSettings& settings, std::string_view trackName);

/// The writers of a described output, the playlist for the case that it is segmented; `onNotice` hears of
/// lost segments then. Throws what the platform throws.
std::shared_ptr<OutputAssetWriters> makeOutputAssetWriters(const OutputDescription& description,
                                                           MasterPlaylist masterPlaylist, const Logger& logger,
                                                           const NoticeHandler& onNotice);

}  // namespace zorvane
