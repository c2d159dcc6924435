// What the conductor knows of a recorder, each of which captures one kind of source into the bundle.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Zorvane/Internal/AbortSignal.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/ZVBundleInfo.hpp"
#include "Zorvane/ZVSoundLevel.hpp"

namespace zorvane {

/// How a recorder is doing. Pictures are those of the recording interval that it has met so far.
struct RecorderStatistics {
    std::uint64_t framesWritten = 0;        ///< given to the writer, repeats included
    std::uint64_t framesDropped = 0;        ///< lost because the writer wasn't ready or failed
    std::uint64_t framesRepeated = 0;       ///< shown again because no other had come, whether written or dropped
    std::vector<ZVSoundLevel> soundLevels;  ///< of each source of sound, also before the recording starts
};

/// One source's capture. There is no start: a recorder captures from its preparation on, and keeps what lies inside the
/// recording interval, which it reads on its sample path. Nobody tells it when the interval changes.
///
/// Its life: construction opens outputs and may throw, but captures nothing. `prepare` runs once, beside those of the
/// other recorders. Then samples flow. `finish` runs once, after the interval has got its end, and only if the
/// recording was started. A recorder that fails while samples flow calls the `AbortHandler` it was made with and goes
/// on as well as it can until `finish`.
///
/// The destructor ends the capture and joins what the recorder has running. It may come in any state and on any thread
/// but the recorder's own.
///
/// The operations are called on no particular thread, and none runs while another one of the same recorder does, but
/// for `statistics`. A recorder outlives the tasks it returns.
class Recorder {
  public:
    virtual ~Recorder() = default;

    /// That of the schema item, whose recorders share it; names the recorder in logs, beside its type.
    virtual const std::string& id() const = 0;

    /// Starts the source and ends when it delivers. Throws if it can't; the recording then fails. Is cancelled when
    /// another recorder fails.
    virtual Task<> prepare() = 0;

    /// Ends the capture and produces nothing. Doesn't throw.
    virtual Task<> cancel() = 0;

    /// Ends the capture, writes out what belongs to the interval, closes the files and lists them, relative to the
    /// bundle. Throws if it can't; its files are then missing in the manifest.
    virtual Task<std::vector<ZVBundleInfo::FileAsset>> finish() = 0;

    /// Any thread, at any time; a short lock at most.
    virtual RecorderStatistics statistics() const { return {}; }
};

using Recorders = std::vector<std::shared_ptr<Recorder>>;

}  // namespace zorvane
