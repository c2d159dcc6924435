// Follows the server's cameras and microphones.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireObjects.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSources.hpp"

namespace zorvane {

/// Keeps a model of the server's nodes, cards and defaults, and publishes it when it has changed and is complete: all
/// that was asked for has come. A burst of changes is published once.
class PipeWireRegistry final : public PipeWireClient, public PipeWireObjectObserver {
  public:
    /// `publish` is called on the session's thread; nothing is there while there is no connection.
    explicit PipeWireRegistry(std::function<void(const PipeWireSources& sources)> publish)
        : publish_(std::move(publish)) {}

    void connected(pw_core& core) override;
    void disconnected() override;

  private:
    void objectChanged() override;
    void objectAsked() override;
    void askServer();
    void serverAnswered();
    void add(std::uint32_t id, std::string_view type, const spa_dict* properties);
    void remove(std::uint32_t id);
    PipeWireSources sources() const;
    PipeWireSource describe(const PipeWireNode& node) const;

    static void onDone(void* self, std::uint32_t id, int sequence);
    static void onGlobal(void* self, std::uint32_t id, std::uint32_t permissions, const char* type,
                         std::uint32_t version, const spa_dict* properties);
    static void onGlobalRemoved(void* self, std::uint32_t id);

    const std::function<void(const PipeWireSources&)> publish_;
    pw_core* core_ = nullptr;
    std::optional<int> question_;  // the request whose answer is awaited
    bool isQuestionLate_ = false;  // more was asked for after it
    std::optional<PipeWireHook> coreHook_;
    std::optional<PipeWireProxy> registry_;
    std::vector<std::unique_ptr<PipeWireNode>> nodes_;  // in the order in which they came
    std::vector<std::unique_ptr<PipeWireCard>> cards_;
    std::unique_ptr<PipeWireDefaults> defaults_;
};

}  // namespace zorvane
