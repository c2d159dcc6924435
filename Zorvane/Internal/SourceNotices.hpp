// Tells the log and the host that a source gives nothing against its will.
#pragma once

#include <exception>
#include <functional>
#include <string>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/AVFoundation/AVMediaType.hpp"
#include "Zorvane/ZVRecordingNotice.hpp"

namespace zorvane {

/// Where a recorder sends what the host is to hear while the recording goes on. May be called on any thread, any number
/// of times; it returns at once. Empty for a recorder that nobody listens to.
using NoticeHandler = std::function<void(ZVRecordingNotice notice)>;

/// Speaks for one source. Any thread.
class SourceNotices {
  public:
    /// `source` is what the source is called for people, `media` what it gives.
    SourceNotices(std::string source, AVMediaType media, NoticeHandler onNotice, const Logger& logger);

    /// The source gives nothing until further notice; `reason` may be null.
    void interrupted(const std::exception_ptr& reason) const;
    void resumed() const;

  private:
    void tell(ZVRecordingNotice::Kind kind, std::exception_ptr reason, std::string userMessage) const;

    const std::string source_;
    const AVMediaType media_;
    const NoticeHandler onNotice_;
    const Logger logger_;
};

}  // namespace zorvane
