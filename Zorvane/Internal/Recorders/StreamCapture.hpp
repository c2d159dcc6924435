// What the recorders of a screen stream do alike: start it, stop it, and tell why it stopped.
#pragma once

#include <exception>
#include <functional>
#include <memory>

#include "Zorvane/Internal/AbortSignal.hpp"
#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCStream.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {

/// Hears of a stream's end and of failures on its sample path; any thread, any number of times. The error may be null.
using StopErrorHandler = std::function<void(std::exception_ptr error)>;

/// Passes the end of a stream on as an abort, and sorts a stop that the user asked for from an interruption.
StopErrorHandler makeStopErrorHandler(const Logger& logger, const AbortHandler& onAbort);

/// A stream was to give sound, and none has come.
ZVError noSystemAudioError();

/// Ends when the stream runs. Logs and throws why it doesn't; throws `ZVCancelled`. The stream outlives the task.
Task<> startCapture(SCStream& stream, Logger logger);

/// Ends when no more samples come, also in a cancelled task; returns null, or after logging it the error with which the
/// stream failed to stop. That it had stopped before is no error. The stream outlives the task.
Task<std::exception_ptr> stopCapture(SCStream& stream, Logger logger);

}  // namespace zorvane
