// Speakers that say how long they take.
#pragma once

#include <pipewire/pipewire.h>

#include <chrono>
#include <string>

namespace zorvane {

/// A stereo sink of this process on the PipeWire of the environment. It has a monitor, and is no driver: another node's
/// clock runs it. What it is given it forgets.
class PipeWireTestSink {
  public:
    PipeWireTestSink(const std::string& name, std::chrono::nanoseconds latency);
    PipeWireTestSink(const PipeWireTestSink&) = delete;
    PipeWireTestSink& operator=(const PipeWireTestSink&) = delete;
    ~PipeWireTestSink();

  private:
    static void onParameter(void* self, std::uint32_t id, const spa_pod* parameter);
    static void onProcess(void* self);

    const std::chrono::nanoseconds latency_;
    pw_thread_loop* const loop_;
    pw_stream* stream_ = nullptr;
};

}  // namespace zorvane
