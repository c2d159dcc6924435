#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureDevices.hpp"

#include <algorithm>
#include <iterator>
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
        if (mediaType_ == AVMediaType::muxed) {
            std::ranges::copy(following_->list().cards(), std::back_inserter(matching));
        } else {
            std::ranges::copy_if(following_->list().devices(), std::back_inserter(matching),
                                 [this](const auto& device) { return device->description().mediaType == mediaType_; });
        }
        std::erase_if(matching, [this](const auto& device) { return !isOfTypes(*device); });
        return matching;
    }

    NSKeyValueObservation observeDevices(std::function<void(ChangeKind kind)> handler) override {
        auto token = following_->list().observe([handler] { handler(ChangeKind::setting); });
        handler(ChangeKind::initial);
        return token;
    }

  private:
    bool isOfTypes(const AVCaptureDevice& device) const {
        return std::ranges::count(deviceTypes_, device.deviceType()) > 0;
    }

    const std::shared_ptr<Following> following_;
    const std::vector<AVCaptureDeviceType> deviceTypes_;
    const AVMediaType mediaType_;
};

namespace {

bool isUnreadable(const AVCaptureDevice& device) {
    if (const auto* card = dynamic_cast<const PipeWireCaptureCard*>(&device)) {
        return card->camera()->isUnreadable();
    }
    const auto* single = dynamic_cast<const PipeWireCaptureDevice*>(&device);
    return single && single->isUnreadable();
}

}  // namespace

PipeWireCaptureDevices::PipeWireCaptureDevices(std::shared_ptr<PipeWireSession> session,
                                               std::shared_ptr<AVAudioConverting> sound,
                                               std::shared_ptr<AVVideoConverting> pictures)
    : following_(std::make_shared<Following>(std::move(session))),
      sound_(std::move(sound)),
      pictures_(std::move(pictures)) {}

PipeWireCaptureDevices::~PipeWireCaptureDevices() = default;

std::shared_ptr<AVCaptureDeviceDiscoverySession> PipeWireCaptureDevices::makeDiscoverySession(
    std::vector<AVCaptureDeviceType> deviceTypes, AVMediaType mediaType) {
    return std::make_shared<Session>(following_, std::move(deviceTypes), mediaType);
}

std::string PipeWireCaptureDevices::defaultDeviceID(AVMediaType mediaType) {
    return following_->list().defaultDeviceID(mediaType);
}

std::shared_ptr<AVCaptureDevice> PipeWireCaptureDevices::deviceWithUniqueID(const std::string& uniqueID) {
    std::vector<std::shared_ptr<AVCaptureDevice>> all;
    std::ranges::copy(following_->list().devices(), std::back_inserter(all));
    std::ranges::copy(following_->list().cards(), std::back_inserter(all));
    const auto device = std::ranges::find(all, uniqueID, [](const auto& listed) { return listed->uniqueID(); });
    return device == all.end() ? nullptr : *device;
}

AVCaptureDeviceInput PipeWireCaptureDevices::makeDeviceInput(std::shared_ptr<AVCaptureDevice> device) {
    if (!device->isConnected()) {
        throw NSError(AVFoundationErrorDomain, AVErrorDeviceNotConnected,
                      {"The device “" + device->localizedName() + "” isn't connected."});
    }
    if (isUnreadable(*device)) {
        throw NSError(AVFoundationErrorDomain, AVErrorUnknown,
                      {"The camera “" + device->localizedName() +
                       "” gives its pictures in no format that can be read, such as raw ones or JPEG."});
    }
    return {std::move(device)};
}

std::shared_ptr<AVCaptureSession> PipeWireCaptureDevices::makeCaptureSession() {
    // The list goes on being told of devices for as long as the session lives.
    std::shared_ptr<PipeWireDeviceList> list(following_, &following_->list());
    return std::make_shared<PipeWireCaptureSession>(following_->session(), std::move(list), sound_, pictures_);
}

}  // namespace zorvane
