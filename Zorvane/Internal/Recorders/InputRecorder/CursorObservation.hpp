// Which cursor an event is stamped with.
#pragma once

#include <memory>

#include "Zorvane/Internal/Concurrency/Task.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/Recorders/CursorRecorder/CursorTimeline.hpp"

namespace zorvane {

/// One of several attempts to learn the cursor at an event's time. Throws a `ZVError` while no cursor is known at all,
/// and before the last attempt also when none has been looked at since that time; the last attempt then takes the last
/// cursor known. An event before the first cursor gets the first one.
Task<CursorTimeline::Observation> fetchCursorObservation(CMTime time, std::shared_ptr<const CursorTimeline> timeline,
                                                         int attempt, int maxAttempts, Logger logger);

}  // namespace zorvane
