// Owners of PipeWire's handles. To be destroyed on the loop's thread.
#pragma once

#include <pipewire/pipewire.h>

#include <memory>

namespace zorvane {

/// Takes a descriptor, an event or a timer out of its loop.
struct PipeWireSourceDeleter {
    pw_loop* loop = nullptr;
    void operator()(spa_source* source) const { spa_loop_utils_destroy_source(loop->utils, source); }
};
using PipeWireLoopSource = std::unique_ptr<spa_source, PipeWireSourceDeleter>;

struct PipeWireContextDeleter {
    void operator()(pw_context* context) const { pw_context_destroy(context); }
};
using PipeWireContextOwner = std::unique_ptr<pw_context, PipeWireContextDeleter>;

/// Hangs up; all proxies of the core must be gone.
struct PipeWireCoreDeleter {
    void operator()(pw_core* core) const { pw_core_disconnect(core); }
};
using PipeWireCoreOwner = std::unique_ptr<pw_core, PipeWireCoreDeleter>;

/// A place in a list of listeners.
class PipeWireHook {
  public:
    PipeWireHook() = default;
    PipeWireHook(const PipeWireHook&) = delete;
    PipeWireHook& operator=(const PipeWireHook&) = delete;
    ~PipeWireHook() { remove(); }

    spa_hook* get() { return &hook_; }
    void remove() {
        if (hook_.link.prev) {
            spa_hook_remove(&hook_);
            hook_ = {};
        }
    }

  private:
    spa_hook hook_{};
};

/// An object of the server that is listened to. It stays where it is, because the server's events come by its address.
class PipeWireProxy {
  public:
    /// Takes over `proxy`, which may be null.
    explicit PipeWireProxy(void* proxy) : proxy_(static_cast<pw_proxy*>(proxy)) {}
    PipeWireProxy(const PipeWireProxy&) = delete;
    PipeWireProxy& operator=(const PipeWireProxy&) = delete;
    ~PipeWireProxy() {
        hook_.remove();
        if (proxy_) {
            pw_proxy_destroy(proxy_);
        }
    }

    /// Once; `events` is the `pw_..._events` of the object's kind.
    void listen(const void* events, void* data) {
        if (proxy_) {
            pw_proxy_add_object_listener(proxy_, hook_.get(), events, data);
        }
    }

    /// Not for a null one.
    template <class Interface>
    Interface* as() const {
        return reinterpret_cast<Interface*>(proxy_);
    }

  private:
    pw_proxy* const proxy_;
    PipeWireHook hook_;
};

}  // namespace zorvane
