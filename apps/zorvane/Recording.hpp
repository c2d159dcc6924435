// One recording from its preparation to its end: how a host drives the library.
#pragma once

#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "RecordOutcome.hpp"
#include "RecordingEnd.hpp"
#include "Zorvane/ZVRecorder.hpp"

namespace zorvane::cli {

/// Who wants to hear of a recording. Any of them may be empty; all but `notice` are called on the thread of `run`.
struct RecordingObserver {
    using Live = std::function<void(const ZVRecorder::Statistics& statistics)>;

    /// Once, with the beginning on the host clock, in seconds.
    std::function<void(double recordFrom)> started;
    /// A few times per second while recording. An empty one wakes nobody.
    Live live;
    /// On a thread of the library.
    ZVRecorder::OnNotice notice;
};

class Recording {
  public:
    /// Records `items` into the new directory `bundle`.
    Recording(std::vector<ZVRecorder::SchemaItem> items, const std::filesystem::path& bundle,
              std::shared_ptr<RecordingEnd> end);

    /// Records for so many seconds, or until there is another reason to end. Blocks; never throws for what the
    /// recording meets. Once this object is gone, `discard` takes away what a recording that failed has left.
    RecordOutcome run(std::optional<double> seconds, const RecordingObserver& observer);

  private:
    void start();
    void waitForEnd(std::optional<double> seconds, const RecordingObserver::Live& live);
    RecordOutcome stop();
    RecordOutcome failed(const std::exception_ptr& error);

    const std::filesystem::path bundle_;
    const std::shared_ptr<RecordingEnd> end_;
    ZVRecorder recorder_;
};

/// Removes the bundle directory of a recording that failed, unless it was somebody else's before.
void discard(const RecordOutcome& outcome);

}  // namespace zorvane::cli
