#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureSession.hpp"

#include <map>
#include <utility>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireCamera.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureCard.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireMicrophone.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundInput.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoInput.hpp"

namespace zorvane {
namespace {

constexpr const char* streamName = "Zorvane";

using Device = std::shared_ptr<const PipeWireCaptureDevice>;

/// What a device gives: pictures, sound, or both.
struct Sources {
    Device camera;
    Device microphone;
    AVMediaType input = AVMediaType::video;
};

Sources sourcesOf(const AVCaptureDeviceInput& input) {
    if (const auto card = std::dynamic_pointer_cast<const PipeWireCaptureCard>(input.device)) {
        return {.camera = card->camera(), .microphone = card->microphone(), .input = AVMediaType::muxed};
    }
    auto device = std::dynamic_pointer_cast<const PipeWireCaptureDevice>(input.device);
    if (!device) {
        return {};
    }
    const AVMediaType type = device->description().mediaType;
    return type == AVMediaType::audio ? Sources{.microphone = std::move(device), .input = type}
                                      : Sources{.camera = std::move(device), .input = type};
}

void deliver(const AVCaptureDataOutput& output, const CMSampleBuffer& sample) {
    if (const auto delegate = output.sampleBufferDelegate().lock()) {
        output.queue().sync([&] { delegate->captureOutput(output, sample); });
    }
}

}  // namespace

/// Tells of inputs as a whole: a muxed one is interrupted as long as one of its halves is.
class PipeWireCaptureSession::Interruptions {
  public:
    NSKeyValueObservation observe(InterruptionHandler handler) { return observers_.add(std::move(handler)); }

    /// On the session's thread.
    void report(AVMediaType input, AVMediaType half, const std::exception_ptr& reason) {
        auto& missing = missing_[input];
        const bool wasMissing = !missing.empty();
        reason ? void(missing.insert_or_assign(half, reason)) : void(missing.erase(half));
        if (!wasMissing || missing.empty() || input != AVMediaType::muxed) {
            observers_.notify(input, missing.empty() ? nullptr : reason);
        }
    }

  private:
    NSKeyValueObservers<AVMediaType, std::exception_ptr> observers_;
    std::map<AVMediaType, std::map<AVMediaType, std::exception_ptr>> missing_;  // of each input, the halves
};

PipeWireCaptureSession::PipeWireCaptureSession(std::shared_ptr<PipeWireSession> session,
                                               std::shared_ptr<PipeWireDeviceList> list,
                                               std::shared_ptr<AVAudioConverting> sound,
                                               std::shared_ptr<AVVideoConverting> pictures)
    : session_(std::move(session)),
      list_(std::move(list)),
      soundConverting_(std::move(sound)),
      pictureConverting_(std::move(pictures)),
      interruptions_(std::make_shared<Interruptions>()) {}

PipeWireCaptureSession::~PipeWireCaptureSession() = default;

bool PipeWireCaptureSession::canAddInput(const AVCaptureDeviceInput& input) const {
    const Sources sources = sourcesOf(input);
    const bool fits =
        (!sources.camera || (pictureConverting_ && !pictures_.device)) && (!sources.microphone || !sound_.device);
    return (sources.camera || sources.microphone) && fits;
}

void PipeWireCaptureSession::addInput(AVCaptureDeviceInput input) {
    Sources sources = sourcesOf(input);
    if (sources.camera) {
        pictures_.device = std::move(sources.camera);
        pictures_.input = sources.input;
    }
    if (sources.microphone) {
        sound_.device = std::move(sources.microphone);
        sound_.input = sources.input;
    }
}

const PipeWireCaptureSession::Connection* PipeWireCaptureSession::connection(AVMediaType mediaType) const {
    switch (mediaType) {
        case AVMediaType::video:
            return &pictures_;
        case AVMediaType::audio:
            return &sound_;
        case AVMediaType::muxed:
            break;
    }
    return nullptr;
}

bool PipeWireCaptureSession::canAddOutput(const AVCaptureDataOutput& output) const {
    const Connection* found = connection(output.mediaType());
    const bool isOurFormat =
        output.pixelFormat().value_or(CVPixelFormat::yCbCr420VideoRange) == CVPixelFormat::yCbCr420VideoRange;
    return found && found->device && !found->output && isOurFormat;
}

void PipeWireCaptureSession::addOutput(std::shared_ptr<AVCaptureDataOutput> output) {
    Connection& open = output->mediaType() == AVMediaType::video ? pictures_ : sound_;
    open.output = std::move(output);
}

bool PipeWireCaptureSession::hasEnabledConnection(AVMediaType mediaType) const {
    const Connection* found = connection(mediaType);
    return found && found->device && found->output;
}

void PipeWireCaptureSession::startRunning() {
    if (!microphone_ && hasEnabledConnection(AVMediaType::audio)) {
        microphone_ = makeMicrophone();
    }
    if (!camera_ && hasEnabledConnection(AVMediaType::video)) {
        camera_ = makeCamera();
    }
}

std::unique_ptr<PipeWireMicrophone> PipeWireCaptureSession::makeMicrophone() const {
    PipeWireSoundInput::Settings settings{.name = streamName, .output = *sound_.device->activeFormat().audioFormat};
    const auto sink = [output = sound_.output](const CMSampleBuffer& sample) { deliver(*output, sample); };
    auto input = std::make_unique<PipeWireSoundInput>(session_, std::move(settings), soundConverting_, sink);
    const auto tell = [interruptions = interruptions_, input = sound_.input](const std::exception_ptr& reason) {
        interruptions->report(input, AVMediaType::audio, reason);
    };
    return std::make_unique<PipeWireMicrophone>(session_, list_, sound_.device, std::move(input), tell);
}

std::unique_ptr<PipeWireCamera> PipeWireCaptureSession::makeCamera() const {
    const auto sink = [output = pictures_.output](const CMSampleBuffer& sample) { deliver(*output, sample); };
    auto input = std::make_unique<PipeWireVideoInput>(session_, streamName, pictureConverting_, sink);
    const auto tell = [interruptions = interruptions_, input = pictures_.input](const std::exception_ptr& reason) {
        interruptions->report(input, AVMediaType::video, reason);
    };
    return std::make_unique<PipeWireCamera>(session_, list_, pictures_.device, std::move(input), tell);
}

void PipeWireCaptureSession::stopRunning() {
    microphone_.reset();
    camera_.reset();
}

NSKeyValueObservation PipeWireCaptureSession::observeInterruptions(InterruptionHandler handler) {
    return interruptions_->observe(std::move(handler));
}

}  // namespace zorvane
