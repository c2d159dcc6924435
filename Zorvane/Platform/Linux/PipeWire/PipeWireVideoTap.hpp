// Our node in the server's graph that takes pictures.
#pragma once

#include <pipewire/stream.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireHandles.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireInputLinks.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireMemory.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWirePictureExchange.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoFormat.hpp"

namespace zorvane {

/// A stream with one input that nobody connects but us, and that moves its buffers through an exchange. It lives as
/// long as a connection and a source, all on the session's thread.
class PipeWireVideoTap {
  public:
    /// Why no pictures come, in the server's words, which may be none; nothing: the first one is here. A stream runs
    /// even if its camera doesn't. Not to destroy the tap in.
    using FlowHandler = std::function<void(const std::optional<std::string>& failure)>;

    /// Linked to `source` as soon as its port is there. `exchange` outlives the tap. Throws `NSError` if PipeWire can't
    /// make a node.
    PipeWireVideoTap(pw_core& core, const std::string& name, const PipeWireVideoSource& source,
                     PipeWirePictureExchange& exchange, FlowHandler flowChanged);
    PipeWireVideoTap(const PipeWireVideoTap&) = delete;
    PipeWireVideoTap& operator=(const PipeWireVideoTap&) = delete;
    /// After it no buffer is in the exchange.
    ~PipeWireVideoTap();

  private:
    struct StreamDeleter {
        void operator()(pw_stream* stream) const { pw_stream_destroy(stream); }
    };

    static void onStateChanged(void* self, pw_stream_state old, pw_stream_state state, const char* error);
    static void onParameter(void* self, std::uint32_t id, const spa_pod* parameter);
    static void onBufferAdded(void* self, pw_buffer* buffer);
    static void onBufferRemoved(void* self, pw_buffer* buffer);
    static void onProcess(void* self);

    void fail(const std::string& reason);
    void formatChanged(const spa_pod* parameter);
    void handOver(pw_buffer* buffer);
    void takeBack();

    PipeWirePictureExchange& exchange_;
    const FlowHandler flowChanged_;
    const std::unique_ptr<pw_stream, StreamDeleter> stream_;
    PipeWireHook streamHook_;
    PipeWireLoopSource returning_;
    PipeWireInputLinks links_;
    bool isFlowing_ = false;                                          // as it was told last
    std::optional<PipeWireVideoFormat> format_;                       // that was agreed on
    std::map<pw_buffer*, std::unique_ptr<PipeWireMemory>> memories_;  // of the buffers that there are
};

}  // namespace zorvane
