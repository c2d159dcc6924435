// What can be learnt of a phone by asking it.
#pragma once

#include <optional>
#include <string>

#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"
#include "Zorvane/Platform/Linux/Phone/PhoneService.hpp"

namespace zorvane {

struct PhoneFacts {
    std::string name = "iPhone";  ///< as its owner calls it
    std::string model;            ///< such as "iPhone14,2"; empty when unknown
    AVCaptureDevicePairing pairing = AVCaptureDevicePairing::notPaired;

    bool operator==(const PhoneFacts&) const = default;
};

/// What is known of a phone that hasn't answered. `hostID` is present if it has trusted this machine before.
PhoneFacts presumeFacts(const AttachedPhone& phone, const std::optional<std::string>& hostID);

/// Asks the phone for its name and model, and, when it is on a cable and has trusted this machine before, whether it
/// still lets it in; a phone that is locked has to be connected again. Asks for nothing that its user would see. Blocks
/// for up to half a minute for each of these questions. Never throws: what a phone doesn't answer is presumed.
PhoneFacts askPhone(const AttachedPhone& phone, const std::optional<std::string>& hostID);

}  // namespace zorvane
