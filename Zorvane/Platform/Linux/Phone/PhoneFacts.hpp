// What can be learnt of a phone by asking it.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"

namespace zorvane {

class PhoneWakeup;

/// A phone as the service tells of it.
struct AttachedPhone {
    enum class Attachment : std::uint8_t { cable, network };

    std::uint64_t deviceID = 0;  ///< the service's number for this attachment
    std::string udid;            ///< the phone's own, for good
    Attachment attachment = Attachment::cable;
};

struct PhoneFacts {
    std::string name = "iPhone";  ///< as its owner calls it
    std::string model;            ///< such as "iPhone14,2"; empty when unknown
    AVCaptureDevicePairing pairing = AVCaptureDevicePairing::notPaired;

    bool operator==(const PhoneFacts&) const = default;
};

/// Asks the phone for its name and model, and whether it lets this machine in. Asks for nothing that its user would
/// see. Takes `longest` at most, and ends at once when `stop` is set. Never throws: a phone that doesn't answer needs
/// to be connected again, if it has trusted this machine before.
PhoneFacts askPhone(const std::filesystem::path& service, const AttachedPhone& phone, const PhoneWakeup& stop,
                    std::chrono::milliseconds longest);

}  // namespace zorvane
