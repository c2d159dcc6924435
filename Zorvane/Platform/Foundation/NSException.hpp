// What the platform throws for a programming error, such as appending to a writer that was never started.
#pragma once

#include <exception>
#include <string>
#include <vector>

namespace zorvane {

/// Not an `NSError`: code that handles errors doesn't take it for one. `ExceptionCatcher` turns it into an error where
/// a caller can't rule it out.
class NSException : public std::exception {
  public:
    /// Notes the call stack of the thread.
    NSException(std::string name, std::string reason);

    const std::string& name() const { return name_; }
    const std::string& reason() const { return reason_; }
    /// Where it was made, innermost frame first.
    const std::vector<std::string>& callStackSymbols() const { return callStackSymbols_; }

    /// The reason.
    const char* what() const noexcept override { return reason_.c_str(); }

  private:
    std::string name_;
    std::string reason_;
    std::vector<std::string> callStackSymbols_;
};

}  // namespace zorvane
