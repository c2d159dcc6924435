// What a script hears while a recording goes on.
#pragma once

#include <exception>
#include <filesystem>
#include <mutex>
#include <string>

#include "RecordOutcome.hpp"

namespace zorvane::cli {

/// Prints one JSON object a line on standard output. Any thread; what can't be printed is kept as an error.
class RecordEvents {
  public:
    /// `recordFrom` is in seconds on the host clock.
    void started(const std::filesystem::path& bundle, double recordFrom);
    /// A segment's file is complete.
    void segment(const std::filesystem::path& file);
    /// A source gives no sound for now, or does again.
    void notice(const ZVRecorder::Notice& notice);
    /// The last one: the recording's whole outcome. Throws what kept an event from being printed.
    void ended(const RecordOutcome& outcome);

  private:
    void print(const std::string& line);

    std::mutex mutex_;
    std::exception_ptr error_;  // guarded by mutex_
};

}  // namespace zorvane::cli
