// The library's own names for a stream and its source.
#pragma once

#include "Zorvane/ZVAsyncStream.hpp"

namespace zorvane {

template <class T>
using AsyncStream = ZVAsyncStream<T>;

template <class T>
using AsyncStreamSource = typename ZVAsyncStream<T>::Source;

using StreamBuffering = ZVStreamBuffering;

}  // namespace zorvane
