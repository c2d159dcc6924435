#include "Zorvane/Platform/Virtual/VirtualCaptureSession.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "Zorvane/Platform/Virtual/VirtualCameraSource.hpp"
#include "Zorvane/Platform/Virtual/VirtualMicrophoneSource.hpp"

namespace zorvane {
namespace {

bool gives(const VirtualCaptureDevice& device, AVMediaType mediaType) {
    const AVMediaType given = device.description().mediaType;
    return given == mediaType || given == AVMediaType::muxed;
}

}  // namespace

VirtualCaptureSession::VirtualCaptureSession(std::shared_ptr<VirtualCaptureDevices> devices)
    : devices_(std::move(devices)),
      conditions_(devices_->sessionConditions()),
      clock_(conditions_.clockOffset ? std::optional<VirtualClock>(*conditions_.clockOffset) : std::nullopt) {}

VirtualCaptureSession::~VirtualCaptureSession() {
    stopRunning();
}

bool VirtualCaptureSession::canAddInput(const AVCaptureDeviceInput& input) const {
    const auto device = std::dynamic_pointer_cast<VirtualCaptureDevice>(input.device);
    if (!device || refuses(VirtualSessionRefusal::Part::input, device->description().mediaType)) {
        return false;
    }
    return std::ranges::none_of(std::array{AVMediaType::video, AVMediaType::audio}, [&](AVMediaType mediaType) {
        return gives(*device, mediaType) && inputFor(mediaType);
    });
}

void VirtualCaptureSession::addInput(AVCaptureDeviceInput input) {
    inputs_.push_back(std::dynamic_pointer_cast<VirtualCaptureDevice>(std::move(input.device)));
}

bool VirtualCaptureSession::canAddOutput(const AVCaptureDataOutput& output) const {
    const AVMediaType mediaType = output.mediaType();
    return inputFor(mediaType) && !outputFor(mediaType) && !refuses(VirtualSessionRefusal::Part::output, mediaType);
}

void VirtualCaptureSession::addOutput(std::shared_ptr<AVCaptureDataOutput> output) {
    outputs_.push_back(std::move(output));
}

bool VirtualCaptureSession::hasEnabledConnection(AVMediaType mediaType) const {
    return inputFor(mediaType) && outputFor(mediaType) && !refuses(VirtualSessionRefusal::Part::connection, mediaType);
}

const AVCaptureDevice* VirtualCaptureSession::inputFor(AVMediaType mediaType) const {
    const auto input = std::ranges::find_if(inputs_, [&](const auto& device) { return gives(*device, mediaType); });
    return input == inputs_.end() ? nullptr : input->get();
}

const AVCaptureDataOutput* VirtualCaptureSession::outputFor(AVMediaType mediaType) const {
    const auto output = std::ranges::find(outputs_, mediaType, &AVCaptureDataOutput::mediaType);
    return output == outputs_.end() ? nullptr : output->get();
}

bool VirtualCaptureSession::refuses(VirtualSessionRefusal::Part part, AVMediaType mediaType) const {
    return conditions_.refusal == VirtualSessionRefusal{part, mediaType};
}

void VirtualCaptureSession::startRunning() {
    if (!sources_.empty()) {
        return;
    }
    delivery_->stampOffset = clock_ ? clock_->behind() : devices_->clock()->now();
    for (const auto& device : inputs_) {
        startSources(*device);
    }
}

void VirtualCaptureSession::startSources(const VirtualCaptureDevice& device) {
    const Interruption interrupt = interruptionOf(device);
    for (const auto& output : outputs_) {
        if (gives(device, output->mediaType())) {
            sources_.push_back(makeSource(device, output, interrupt));
            sources_.back()->start();
        }
    }
}

VirtualCaptureSession::Interruption VirtualCaptureSession::interruptionOf(const VirtualCaptureDevice& device) const {
    return [delivery = delivery_, input = device.description().mediaType,
            isPresent = std::make_shared<std::atomic<bool>>(true)](const std::exception_ptr& reason) {
        const bool isBack = reason == nullptr;
        if (delivery->isRunning && isPresent->exchange(isBack) != isBack) {
            delivery->interruptionObservers.notify(input, reason);
        }
    };
}

std::shared_ptr<VirtualDeviceSource> VirtualCaptureSession::makeSource(
    const VirtualCaptureDevice& device, const std::shared_ptr<AVCaptureDataOutput>& output,
    Interruption interrupt) const {
    auto deliver = [delivery = delivery_, output](const CMSampleBuffer& sample) { delivery->deliver(*output, sample); };
    VirtualDeviceSource::Receiver receiver{std::move(deliver), std::move(interrupt)};
    if (output->mediaType() == AVMediaType::audio) {
        return std::make_shared<VirtualMicrophoneSource>(devices_, device.uniqueID(), std::move(receiver));
    }
    using Late = VirtualCameraSource::LatePictures;
    const Late late = output->alwaysDiscardsLateVideoFrames() ? Late::dropped : Late::delivered;
    return std::make_shared<VirtualCameraSource>(devices_, device.uniqueID(), std::move(receiver), late);
}

void VirtualCaptureSession::stopRunning() {
    if (sources_.empty() || !delivery_->isRunning.exchange(false)) {
        return;
    }
    for (const auto& source : sources_) {
        source->stop();
    }
    for (const auto& output : outputs_) {
        output->queue().sync([] {});  // behind a sample that is just being delivered
    }
}

NSKeyValueObservation VirtualCaptureSession::observeInterruptions(InterruptionHandler handler) {
    return delivery_->interruptionObservers.add(std::move(handler));
}

void VirtualCaptureSession::Delivery::deliver(const AVCaptureDataOutput& output, const CMSampleBuffer& sample) const {
    CMSampleTimingInfo timing = sample.timing();
    const CMTime offset =
        CMTime::fromSeconds(std::chrono::duration<double>(stampOffset).count(), timing.presentationTimeStamp.timescale);
    timing.presentationTimeStamp = timing.presentationTimeStamp - offset;
    const CMSampleBuffer stamped = sample.copyWithNewTiming(timing);
    const PoolBlockingScope blocking;  // the receiver may wait for others
    output.queue().sync([&] {
        const auto delegate = output.sampleBufferDelegate().lock();
        if (isRunning && delegate) {
            delegate->captureOutput(output, stamped);
        }
    });
}

}  // namespace zorvane
