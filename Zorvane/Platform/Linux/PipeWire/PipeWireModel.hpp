// What a client of the connection knows of the server's objects, and whether that is all.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireHandles.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireObjects.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"

namespace zorvane {

/// Hands the server's objects to a model, which keeps those that it is about, and publishes when the model has changed
/// and is complete: all that was asked for has come, which the answer to a last request tells. A burst of changes is
/// published once, and the end of the connection as an empty model.
class PipeWireModel : public PipeWireClient, public PipeWireObjectObserver {
  public:
    void connected(pw_core& core) final;
    void disconnected() final;

  protected:
    void objectChanged() final;
    void objectAsked() final;

    /// The number of this client at the server, while it is connected.
    std::uint32_t ownClient() const;

  private:
    /// There is a new object; the model tells of its change or asks for more, if it keeps it.
    virtual void add(pw_registry* registry, std::uint32_t id, std::string_view type, const spa_dict* properties) = 0;
    /// Whether the model kept it.
    virtual bool remove(std::uint32_t id) = 0;
    virtual void clear() = 0;
    virtual void publish(bool isConnected) = 0;

    void askServer();
    void serverAnswered();

    static void onDone(void* self, std::uint32_t id, int sequence);
    static void onGlobal(void* self, std::uint32_t id, std::uint32_t permissions, const char* type,
                         std::uint32_t version, const spa_dict* properties);
    static void onGlobalRemoved(void* self, std::uint32_t id);

    pw_core* core_ = nullptr;
    std::optional<int> question_;  // the request whose answer is awaited
    bool isQuestionLate_ = false;  // more was asked for after it
    std::optional<PipeWireHook> coreHook_;
    std::optional<PipeWireProxy> registry_;
};

}  // namespace zorvane
