// The server's objects that tell of cameras and microphones. All on the session's thread.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVMediaType.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireHandles.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireNodeFormat.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireProperties.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireRoutes.hpp"

struct pw_device_info;
struct pw_node_info;

namespace zorvane {

/// Where the objects report to.
class PipeWireObjectObserver {
  public:
    /// What the object says of itself is different now.
    virtual void objectChanged() = 0;
    /// The object has asked the server for more, which comes before the answer to a request made from now on.
    virtual void objectAsked() = 0;

  protected:
    ~PipeWireObjectObserver() = default;
};

/// A source of sound or pictures.
class PipeWireNode {
  public:
    PipeWireNode(pw_registry* registry, std::uint32_t id, AVMediaType mediaType, PipeWireObjectObserver& observer);

    std::uint32_t id() const { return id_; }
    AVMediaType mediaType() const { return mediaType_; }
    /// Empty until the server has told.
    const PipeWireProperties& properties() const { return properties_; }
    /// Why it doesn't work, as it says itself; empty while it does.
    const std::string& error() const { return error_; }
    /// Of sound, as far as the server has told: what the node runs in or ran in last, else what it prefers.
    const PipeWireNodeFormat& format() const { return format_.rate > 0 ? format_ : preferredFormat_; }

  private:
    static void onInfo(void* self, const pw_node_info* info);
    static void onParameter(void* self, int sequence, std::uint32_t parameter, std::uint32_t index, std::uint32_t next,
                            const spa_pod* value);

    const std::uint32_t id_;
    const AVMediaType mediaType_;
    PipeWireObjectObserver& observer_;
    PipeWireProperties properties_;
    std::string error_;
    PipeWireNodeFormat format_;
    PipeWireNodeFormat preferredFormat_;
    PipeWireProxy proxy_;
};

/// The piece of hardware behind nodes: a sound card, a camera.
class PipeWireCard {
  public:
    PipeWireCard(pw_registry* registry, std::uint32_t id, PipeWireObjectObserver& observer);

    std::uint32_t id() const { return id_; }
    const PipeWireProperties& properties() const { return properties_; }
    /// As far as the server has told.
    PipeWireRoutes routes() const;

  private:
    /// A parameter of several values, which are asked for whenever the card says that they changed.
    struct RouteList {
        std::uint32_t flags = 0;  // differ after each change
        int request = -1;
        std::vector<PipeWireRoute> routes;
    };

    static void onInfo(void* self, const pw_device_info* info);
    static void onParameter(void* self, int sequence, std::uint32_t parameter, std::uint32_t index, std::uint32_t next,
                            const spa_pod* value);
    RouteList* listOf(std::uint32_t parameter);
    void askAgainIfChanged(const spa_param_info& parameter);

    const std::uint32_t id_;
    PipeWireObjectObserver& observer_;
    PipeWireProperties properties_;
    RouteList active_;
    RouteList possible_;
    PipeWireProxy proxy_;
};

/// Which nodes the session manager and the user have chosen.
class PipeWireDefaults {
  public:
    PipeWireDefaults(pw_registry* registry, std::uint32_t id, PipeWireObjectObserver& observer);

    std::uint32_t id() const { return id_; }
    /// The name of the node that is chosen for "default.audio.sink" and the like; empty where there is no choice.
    std::string nodeName(std::string_view key) const;
    /// Of the sources of each media type, where there is a choice.
    std::map<AVMediaType, std::string> sourceNames() const;

  private:
    static int onProperty(void* self, std::uint32_t subject, const char* key, const char* type, const char* value);

    const std::uint32_t id_;
    PipeWireObjectObserver& observer_;
    PipeWireProperties values_;
    PipeWireProxy proxy_;
};

}  // namespace zorvane
