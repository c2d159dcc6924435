#include "Zorvane/Internal/ZVUserPreferred.hpp"

#include <optional>
#include <utility>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Internal/Discovery/CameraDiscovery.hpp"
#include "Zorvane/Internal/Discovery/DisplayDiscovery.hpp"
#include "Zorvane/Internal/Discovery/MicrophoneDiscovery.hpp"
#include "Zorvane/Internal/Discovery/SharedDiscovery.hpp"
#include "Zorvane/Internal/LogPieces.hpp"
#include "Zorvane/Internal/SchemaItem.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {
namespace {

constexpr std::string_view cameras = "ZVPreferredCameras";
constexpr std::string_view microphones = "ZVPreferredMicrophones";
constexpr std::string_view displays = "ZVPreferredDisplays";

/// The value if it is a list of this type, else an empty list.
template <class ID>
std::vector<ID> listOf(std::optional<NSUserDefaultsArray> value) {
    auto* list = value ? std::get_if<std::vector<ID>>(&*value) : nullptr;
    return list ? std::move(*list) : std::vector<ID>();
}

/// Has the list of a kind of source put the new one first, if anybody keeps such a list.
template <class Discovery>
void triggerUpdate() {
    if (const auto discovery = startedDiscovery<Discovery>()) {
        discovery->triggerUpdate();
    }
}

/// Updates what an item records.
struct ItemUpdate {
    const ZVUserPreferred& preferred;

    void operator()(const WebcamSchemaItem& item) const {
        preferred.updateCamera(item.cameraID);
        preferred.updateMicrophone(item.microphoneID);
    }
    void operator()(const MicrophoneFileSchemaItem& item) const { preferred.updateMicrophone(item.microphoneID); }
    void operator()(const MicrophoneStreamSchemaItem& item) const { preferred.updateMicrophone(item.microphoneID); }
    void operator()(const DisplaySchemaItem& item) const { preferred.updateDisplay(item.displayID); }
    void operator()(const CustomSchemaItem&) const {}
    void operator()(const SystemAudioSchemaItem&) const {}
    void operator()(const WindowBasedCropSchemaItem&) const {}
    void operator()(const AppleDeviceStaticOrientationItem&) const {}
};

}  // namespace

std::shared_ptr<const ZVUserPreferred> ZVUserPreferred::shared() {
    const auto platform = Platform::current();
    return platform->world().shared<ZVUserPreferred>(
        [&] { return std::make_shared<ZVUserPreferred>(platform->userDefaults); });
}

ZVUserPreferred::ZVUserPreferred(std::shared_ptr<NSUserDefaults> defaults)
    : defaults_(std::move(defaults)),
      background_(Executor::makeStrand("zv.preferred")),
      logger_(Logger::forType<ZVUserPreferred>()) {}

std::vector<std::string> ZVUserPreferred::cameraIDs() const {
    return preferredIDs<std::string>(cameras);
}

std::vector<std::string> ZVUserPreferred::microphoneIDs() const {
    return preferredIDs<std::string>(microphones);
}

std::vector<std::uint32_t> ZVUserPreferred::displayIDs() const {
    return preferredIDs<std::uint32_t>(displays);
}

void ZVUserPreferred::updateCamera(const std::string& id) const {
    logger_.debug("Update preferred camera", [&] { return LogMetadata{{"cameraID", id}}; });
    updatePreferredID(id, cameras);
    triggerUpdate<CameraDiscovery>();
}

void ZVUserPreferred::updateMicrophone(const std::string& id) const {
    logger_.debug("Update preferred microphone", [&] { return LogMetadata{{"microphoneID", id}}; });
    updatePreferredID(id, microphones);
    triggerUpdate<MicrophoneDiscovery>();
}

void ZVUserPreferred::updateDisplay(std::uint32_t id) const {
    logger_.debug("Update preferred display", [&] { return LogMetadata{{"displayID", std::to_string(id)}}; });
    updatePreferredID(id, displays);
    triggerUpdate<DisplayDiscovery>();
}

void ZVUserPreferred::updateFromSchema(const ZVSchema& schema) const {
    for (const ZVSchemaItem& item : schema.items) {
        std::visit(ItemUpdate{*this}, item.internalItem().payload());
    }
}

void ZVUserPreferred::updateInBackground(ZVSchema schema) const {
    background_->post([self = shared_from_this(), schema = std::move(schema)] {
        const PoolBlockingScope blocking;
        self->updateFromSchema(schema);
    });
}

template <class ID>
std::vector<ID> ZVUserPreferred::preferredIDs(std::string_view key) const {
    return listOf<ID>(defaults_->array(key));
}

template <class ID>
void ZVUserPreferred::updatePreferredID(const ID& id, std::string_view key) const {
    const auto putFirst = [&id](std::optional<NSUserDefaultsArray> value) -> NSUserDefaultsArray {
        auto list = listOf<ID>(std::move(value));
        std::erase(list, id);
        list.insert(list.begin(), id);
        return list;
    };
    try {
        defaults_->update(key, putFirst);
    } catch (const std::exception&) {
        logger_.warning("Can't keep a preferred source.", errorMetadata(std::current_exception()));
    }
}

}  // namespace zorvane
