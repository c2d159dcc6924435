#include "Zorvane/Internal/Discovery/AVCaptureDeviceDiscovery.hpp"

#include <fmt/format.h>

#include "Zorvane/Internal/Concurrency/Executor.hpp"

namespace zorvane {

/// The observation of one session. Handlers may come while a backend holds locks of its own, so they only signal; the
/// backend is asked on the strand.
class AVCaptureDeviceDiscovery::Observation : public std::enable_shared_from_this<Observation> {
  public:
    Observation(std::shared_ptr<AVCaptureDeviceDiscoverySession> session, AsyncStreamSource<Signal> continuation,
                std::shared_ptr<Executor> strand, Logger logger)
        : session_(std::move(session)),
          continuation_(std::move(continuation)),
          strand_(std::move(strand)),
          logger_(std::move(logger)) {}

    void start() {
        devicesObservation_ = session_->observeDevices([weak = weak_from_this()](ChangeKind kind) {
            if (const auto self = weak.lock()) {
                self->devicesChanged(kind);
            }
        });
    }

    Devices devices() const { return session_->devices(); }

  private:
    using ChangeKind = AVCaptureDeviceDiscoverySession::ChangeKind;

    void devicesChanged(ChangeKind kind) {
        switch (kind) {
            case ChangeKind::initial:
            case ChangeKind::setting:
                strand_->post([weak = weak_from_this()] {
                    if (const auto self = weak.lock()) {
                        self->renewSuspendedObservations();
                        self->continuation_.yield({});
                    }
                });
                return;
        }
        logger_.warning("Unexpected change kind DiscoverySession.devices. Might result in incorrect device list.");
    }

    void renewSuspendedObservations() {
        std::vector<NSKeyValueObservation> renewed;
        for (const auto& device : devices()) {
            renewed.push_back(device->observeSuspended([continuation = continuation_] { continuation.yield({}); }));
        }
        suspendedObservations_ = std::move(renewed);
    }

    const std::shared_ptr<AVCaptureDeviceDiscoverySession> session_;
    const AsyncStreamSource<Signal> continuation_;
    const std::shared_ptr<Executor> strand_;
    const Logger logger_;
    NSKeyValueObservation devicesObservation_;
    std::vector<NSKeyValueObservation> suspendedObservations_;  // belongs to the strand
};

AVCaptureDeviceDiscovery::AVCaptureDeviceDiscovery(std::string_view owner, const Sessions& sessions,
                                                   const std::shared_ptr<Executor>& strand)
    : logger_(Logger::forCategory(fmt::format("{}.AVCaptureDevice.Discovery", owner))),
      stream_(AsyncStream<Signal>::make(StreamBuffering::newest(1))) {
    for (const auto& session : sessions) {
        observations_.push_back(std::make_shared<Observation>(session, stream_.second, strand, logger_));
        observations_.back()->start();
    }
}

AVCaptureDeviceDiscovery::~AVCaptureDeviceDiscovery() = default;

AVCaptureDeviceDiscovery::Devices AVCaptureDeviceDiscovery::devices(std::size_t session) const {
    return observations_.at(session)->devices();
}

namespace {

std::string_view name(AVCaptureDeviceType type) {
    switch (type) {
        case AVCaptureDeviceType::builtInMicrophone:
            return "builtInMicrophone";
        case AVCaptureDeviceType::builtInWideAngleCamera:
            return "builtInWideAngleCamera";
        case AVCaptureDeviceType::deskViewCamera:
            return "deskViewCamera";
        case AVCaptureDeviceType::external:
            return "external";
        case AVCaptureDeviceType::externalUnknown:
            return "externalUnknown";
    }
    return {};
}

}  // namespace

std::string debugDescription(const AVCaptureDevice& device) {
    return fmt::format("modelID:{},manufacturer:{},deviceType:{},transportType:{:#010x}", device.modelID(),
                       device.manufacturer(), name(device.deviceType()),
                       static_cast<std::uint32_t>(device.transportType()));
}

}  // namespace zorvane
