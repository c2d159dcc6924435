// Prints the changes of source lists as they come.
#pragma once

#include <chrono>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <string>

#include "CommandLine.hpp"
#include "SourceRow.hpp"

namespace zorvane::cli {

/// Follows the lists that the options name. The first list of each kind is printed whole.
class SourceWatch {
  public:
    explicit SourceWatch(const SourcesOptions& options) : options_(options) {}

    /// Blocks until a signal asks for the end. Throws if something can't be printed.
    void run();

  private:
    void print(SourceKind kind, SourceRows rows);
    std::string linesFor(SourceKind kind, const SourceRows& rows);

    const SourcesOptions& options_;
    std::mutex mutex_;  // guards all below
    std::condition_variable changed_;
    std::map<SourceKind, SourceRows> last_;
    std::size_t ended_ = 0;
    std::exception_ptr error_;
    bool isStopRequested_ = false;
};

}  // namespace zorvane::cli
