#include "Zorvane/Platform/Virtual/VirtualCaptureSession.hpp"

#include <utility>

#include "Zorvane/Platform/Virtual/VirtualMicrophoneSource.hpp"

namespace zorvane {

VirtualCaptureSession::~VirtualCaptureSession() {
    stopRunning();
}

bool VirtualCaptureSession::canAddInput(const AVCaptureDeviceInput& input) const {
    const auto device = std::dynamic_pointer_cast<VirtualCaptureDevice>(input.device);
    return !device_ && device && device->description().mediaType == AVMediaType::audio;
}

void VirtualCaptureSession::addInput(AVCaptureDeviceInput input) {
    device_ = std::move(input.device);
    if (const auto offset = devices_->microphone(device_->uniqueID()).clockOffset) {
        clock_.emplace(*offset);
    }
}

bool VirtualCaptureSession::canAddOutput(const AVCaptureDataOutput& output) const {
    return device_ && !output_ && output.mediaType() == AVMediaType::audio;
}

void VirtualCaptureSession::addOutput(std::shared_ptr<AVCaptureDataOutput> output) {
    output_ = std::move(output);
}

bool VirtualCaptureSession::hasEnabledConnection(AVMediaType mediaType) const {
    return output_ && output_->mediaType() == mediaType;
}

void VirtualCaptureSession::startRunning() {
    if (source_ || !output_) {
        return;
    }
    delivery_ = std::make_shared<Delivery>();
    delivery_->output = output_;
    delivery_->stampOffset = clock_ ? clock_->behind() : devices_->clock()->now();
    auto deliver = [delivery = delivery_](const CMSampleBuffer& sample) { delivery->deliver(sample); };
    auto interrupt = [delivery = delivery_, observers = interruptionObservers_](const std::exception_ptr& reason) {
        if (delivery->isRunning) {
            observers->notify(AVMediaType::audio, reason);
        }
    };
    const VirtualMicrophoneSource::Receiver receiver{std::move(deliver), std::move(interrupt)};
    source_ = std::make_shared<VirtualMicrophoneSource>(devices_, device_->uniqueID(), receiver);
    source_->start();
}

void VirtualCaptureSession::stopRunning() {
    if (!delivery_ || !delivery_->isRunning.exchange(false)) {
        return;
    }
    source_->stop();
    output_->queue().sync([] {});  // behind a sample that is just being delivered
}

NSKeyValueObservation VirtualCaptureSession::observeInterruptions(InterruptionHandler handler) {
    return interruptionObservers_->add(std::move(handler));
}

void VirtualCaptureSession::Delivery::deliver(const CMSampleBuffer& sample) const {
    CMSampleTimingInfo timing = sample.timing();
    const CMTime offset =
        CMTime::fromSeconds(std::chrono::duration<double>(stampOffset).count(), timing.presentationTimeStamp.timescale);
    timing.presentationTimeStamp = timing.presentationTimeStamp - offset;
    const CMSampleBuffer stamped = sample.copyWithNewTiming(timing);
    const PoolBlockingScope blocking;  // the receiver may wait for others
    output->queue().sync([&] {
        const auto delegate = output->sampleBufferDelegate().lock();
        if (isRunning && delegate) {
            delegate->captureOutput(*output, stamped);
        }
    });
}

}  // namespace zorvane
