#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureSession.hpp"

#include <utility>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireMicrophone.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSoundInput.hpp"

namespace zorvane {
namespace {

std::shared_ptr<const PipeWireCaptureDevice> microphoneOf(const AVCaptureDeviceInput& input) {
    auto device = std::dynamic_pointer_cast<const PipeWireCaptureDevice>(input.device);
    return device && device->description().mediaType == AVMediaType::audio ? device : nullptr;
}

void deliver(const AVCaptureDataOutput& output, const CMSampleBuffer& sample) {
    if (const auto delegate = output.sampleBufferDelegate().lock()) {
        output.queue().sync([&] { delegate->captureOutput(output, sample); });
    }
}

}  // namespace

PipeWireCaptureSession::PipeWireCaptureSession(std::shared_ptr<PipeWireSession> session,
                                               std::shared_ptr<PipeWireDeviceList> list,
                                               std::shared_ptr<AVAudioConverting> converting)
    : session_(std::move(session)),
      list_(std::move(list)),
      converting_(std::move(converting)),
      interruptions_(std::make_shared<NSKeyValueObservers<AVMediaType, std::exception_ptr>>()) {}

PipeWireCaptureSession::~PipeWireCaptureSession() = default;

bool PipeWireCaptureSession::canAddInput(const AVCaptureDeviceInput& input) const {
    return !device_ && microphoneOf(input);
}

void PipeWireCaptureSession::addInput(AVCaptureDeviceInput input) {
    device_ = microphoneOf(input);
}

bool PipeWireCaptureSession::canAddOutput(const AVCaptureDataOutput& output) const {
    return device_ && !output_ && output.mediaType() == AVMediaType::audio;
}

void PipeWireCaptureSession::addOutput(std::shared_ptr<AVCaptureDataOutput> output) {
    output_ = std::move(output);
}

bool PipeWireCaptureSession::hasEnabledConnection(AVMediaType mediaType) const {
    return mediaType == AVMediaType::audio && device_ && output_;
}

void PipeWireCaptureSession::startRunning() {
    if (!microphone_ && hasEnabledConnection(AVMediaType::audio)) {
        const auto tell = [interruptions = interruptions_](const std::exception_ptr& reason) {
            interruptions->notify(AVMediaType::audio, reason);
        };
        microphone_ = std::make_unique<PipeWireMicrophone>(session_, list_, device_, makeInput(), tell);
    }
}

std::unique_ptr<PipeWireSoundInput> PipeWireCaptureSession::makeInput() const {
    PipeWireSoundInput::Settings settings{.name = "Zorvane", .output = *device_->activeFormat().audioFormat};
    const auto sink = [output = output_](const CMSampleBuffer& sample) { deliver(*output, sample); };
    return std::make_unique<PipeWireSoundInput>(session_, std::move(settings), converting_, sink);
}

void PipeWireCaptureSession::stopRunning() {
    microphone_.reset();
}

NSKeyValueObservation PipeWireCaptureSession::observeInterruptions(InterruptionHandler handler) {
    return interruptions_->add(std::move(handler));
}

}  // namespace zorvane
