// The library's own name for a task.
#pragma once

#include "Zorvane/ZVTask.hpp"

namespace zorvane {

template <class T = void>
using Task = ZVTask<T>;

}  // namespace zorvane
