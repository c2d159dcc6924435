#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureDevices.hpp"

#include <algorithm>
#include <mutex>
#include <utility>

#include "Zorvane/Platform/AVFoundation/AVError.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireDeviceList.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireRegistry.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"

namespace zorvane {

/// The list and what keeps it up to date from the first use on. Discovery sessions share it, so that they live on
/// without their maker. When the last of them goes, nobody is told of devices any more.
class PipeWireCaptureDevices::Following {
  public:
    explicit Following(std::shared_ptr<PipeWireSession> session)
        : session_(std::move(session)),
          list_(std::make_shared<PipeWireDeviceList>()),
          registry_(std::make_shared<PipeWireRegistry>([list = std::weak_ptr(list_)](const PipeWireSources& sources) {
              if (const auto live = list.lock()) {
                  live->update(sources);
              }
          })) {}
    Following(const Following&) = delete;
    Following& operator=(const Following&) = delete;
    ~Following() { session_->remove(registry_); }

    const std::shared_ptr<PipeWireSession>& session() const { return session_; }

    PipeWireDeviceList& list() {
        std::call_once(started_, [this] { session_->add(registry_); });
        return *list_;
    }

  private:
    const std::shared_ptr<PipeWireSession> session_;
    const std::shared_ptr<PipeWireDeviceList> list_;
    const std::shared_ptr<PipeWireRegistry> registry_;
    std::once_flag started_;
};

class PipeWireCaptureDevices::Session final : public AVCaptureDeviceDiscoverySession {
  public:
    Session(std::shared_ptr<Following> following, std::vector<AVCaptureDeviceType> deviceTypes, AVMediaType mediaType)
        : following_(std::move(following)), deviceTypes_(std::move(deviceTypes)), mediaType_(mediaType) {}

    std::vector<std::shared_ptr<AVCaptureDevice>> devices() const override {
        std::vector<std::shared_ptr<AVCaptureDevice>> matching;
        for (const auto& device : following_->list().devices()) {
            const PipeWireDeviceDescription& what = device->description();
            if (what.mediaType == mediaType_ && std::ranges::count(deviceTypes_, what.deviceType) > 0) {
                matching.push_back(device);
            }
        }
        return matching;
    }

    NSKeyValueObservation observeDevices(std::function<void(ChangeKind kind)> handler) override {
        auto token = following_->list().observe([handler] { handler(ChangeKind::setting); });
        handler(ChangeKind::initial);
        return token;
    }

  private:
    const std::shared_ptr<Following> following_;
    const std::vector<AVCaptureDeviceType> deviceTypes_;
    const AVMediaType mediaType_;
};

PipeWireCaptureDevices::PipeWireCaptureDevices(std::shared_ptr<PipeWireSession> session,
                                               std::shared_ptr<AVAudioConverting> converting)
    : following_(std::make_shared<Following>(std::move(session))), converting_(std::move(converting)) {}

PipeWireCaptureDevices::~PipeWireCaptureDevices() = default;

std::shared_ptr<AVCaptureDeviceDiscoverySession> PipeWireCaptureDevices::makeDiscoverySession(
    std::vector<AVCaptureDeviceType> deviceTypes, AVMediaType mediaType) {
    return std::make_shared<Session>(following_, std::move(deviceTypes), mediaType);
}

std::string PipeWireCaptureDevices::defaultDeviceID(AVMediaType mediaType) {
    return following_->list().defaultDeviceID(mediaType);
}

std::shared_ptr<AVCaptureDevice> PipeWireCaptureDevices::deviceWithUniqueID(const std::string& uniqueID) {
    const PipeWireDeviceList::Devices devices = following_->list().devices();
    const auto device = std::ranges::find(devices, uniqueID, [](const auto& listed) { return listed->uniqueID(); });
    return device == devices.end() ? nullptr : *device;
}

AVCaptureDeviceInput PipeWireCaptureDevices::makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) {
    if (!device->isConnected()) {
        throw NSError(AVFoundationErrorDomain, AVErrorDeviceNotConnected,
                      {"The device “" + device->localizedName() + "” isn't connected."});
    }
    return {std::move(device)};
}

std::shared_ptr<AVCaptureSession> PipeWireCaptureDevices::makeCaptureSession() {
    // The list goes on being told of devices for as long as the session lives.
    std::shared_ptr<PipeWireDeviceList> list(following_, &following_->list());
    return std::make_shared<PipeWireCaptureSession>(following_->session(), std::move(list), converting_);
}

}  // namespace zorvane
