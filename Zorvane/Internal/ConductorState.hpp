// The states of a recording.
#pragma once

#include <exception>
#include <string_view>
#include <utility>
#include <variant>

#include "Zorvane/ZVRecorder.hpp"

namespace zorvane {

/// One of eleven cases, four of which carry how it came to them.
///
///     initial ─> preparing ─> prepared ─> recording ──────────────────> stopping ─> stopped / stopFailed
///        │           │            │            └─> abortingRecording ────^              │ if an abort is behind it
///        │           v            ├─> stopped / stopFailed                              v
///        │     prepareFailed      └─> abortingPrepared ─> stopped / stopFailed ─────> aborted
///        └─> stopFailed
class ConductorState {
  public:
    /// In the order of the alternatives below.
    enum class Case {
        prepareFailed,
        stopped,
        stopFailed,
        aborted,
        initial,            ///< nothing has happened yet
        preparing,          ///< prepare is running
        prepared,           ///< all recorders are capturing; the interval has no start
        recording,          ///< the interval has its start
        stopping,           ///< the interval has its end; recorders are finishing
        abortingPrepared,   ///< an abort came in `prepared`; stop is running on its behalf
        abortingRecording,  ///< an abort came in `recording`; stop is running on its behalf
    };

    /// Preparation failed. Final.
    struct PrepareFailed {
        std::exception_ptr error;
    };
    /// All files are complete. Final, unless an abort is behind it.
    struct Stopped {
        ZVRecorder::Result result;
    };
    /// Stopping met at least one error. Final, unless an abort is behind it.
    struct StopFailed {
        ZVRecorder::PartialResultError error;
    };
    /// Ended by a recorder's signal. Final.
    struct Aborted {
        ZVRecorder::AbortReason reason;
    };
    struct Initial {};
    struct Preparing {};
    struct Prepared {};
    struct Recording {};
    struct Stopping {};
    struct AbortingPrepared {};
    struct AbortingRecording {};

    using Value = std::variant<PrepareFailed, Stopped, StopFailed, Aborted, Initial, Preparing, Prepared, Recording,
                               Stopping, AbortingPrepared, AbortingRecording>;

    ConductorState() : value_(Initial()) {}
    ConductorState(Value value) : value_(std::move(value)) {}

    Case kind() const { return static_cast<Case>(value_.index()); }
    bool is(Case expected) const { return kind() == expected; }

    /// The payload of a state that is of this case.
    template <class Payload>
    const Payload& get() const {
        return std::get<Payload>(value_);
    }

    /// The bare name of the case, for log metadata.
    std::string_view debugDescription() const;

  private:
    Value value_;
};

}  // namespace zorvane
