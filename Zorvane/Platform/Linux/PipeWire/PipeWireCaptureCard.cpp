#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureCard.hpp"

namespace zorvane {

PipeWireCaptureCard::PipeWireCaptureCard(Half camera, Half microphone)
    : camera_(std::move(camera)),
      microphone_(std::move(microphone)),
      cameraObservation_(camera_->observeSuspended([observers = observers_] { observers->notify(); })),
      microphoneObservation_(microphone_->observeSuspended([observers = observers_] { observers->notify(); })) {}

}  // namespace zorvane
