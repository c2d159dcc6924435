// What the running process knows of itself.
#pragma once

#include <cstdint>

namespace zorvane {

/// The process's id, by which windows and sounds name their owner. Any thread.
std::int32_t processIdentifier();

}  // namespace zorvane
