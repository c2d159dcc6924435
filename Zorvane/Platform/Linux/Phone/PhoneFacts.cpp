#include "Zorvane/Platform/Linux/Phone/PhoneFacts.hpp"

#include <libimobiledevice/libimobiledevice.h>
#include <libimobiledevice/lockdown.h>

#include <memory>
#include <type_traits>

#include "Zorvane/Platform/Linux/Phone/PropertyList.hpp"

namespace zorvane {
namespace {

using Attachment = AttachedPhone::Attachment;
using Pairing = AVCaptureDevicePairing;

template <auto free>
struct Free {
    template <class Handle>
    void operator()(Handle* handle) const {
        free(handle);
    }
};
using Device = std::unique_ptr<std::remove_pointer_t<idevice_t>, Free<idevice_free>>;
using Client = std::unique_ptr<std::remove_pointer_t<lockdownd_client_t>, Free<lockdownd_client_free>>;

/// The phone on the attachment that is asked about; it may have both.
Device open(const AttachedPhone& phone) {
    idevice_t device = nullptr;
    const auto lookup = phone.attachment == Attachment::cable ? IDEVICE_LOOKUP_USBMUX : IDEVICE_LOOKUP_NETWORK;
    idevice_new_with_options(&device, phone.udid.c_str(), lookup);
    return Device(device);
}

Client connect(const Device& device) {
    lockdownd_client_t client = nullptr;
    if (device) {
        lockdownd_client_new(device.get(), &client, "zorvane");
    }
    return Client(client);
}

/// False if the phone doesn't answer.
bool readNames(const Client& client, PhoneFacts& facts) {
    void* node = nullptr;
    const auto result = lockdownd_get_value(client.get(), nullptr, nullptr, &node);
    const PropertyList values(node);
    facts.name = textOf(values, "DeviceName").value_or(facts.name);
    facts.model = textOf(values, "ProductType").value_or("");
    return result == LOCKDOWN_E_SUCCESS;
}

/// What a phone says when it is asked for a session, which only one that trusts this machine allows.
Pairing pairingOf(lockdownd_error_t answer) {
    switch (answer) {
        case LOCKDOWN_E_SUCCESS:
            return Pairing::notApplicable;
        case LOCKDOWN_E_INVALID_HOST_ID:
        case LOCKDOWN_E_MISSING_HOST_ID:
        case LOCKDOWN_E_PAIRING_DIALOG_RESPONSE_PENDING:
        case LOCKDOWN_E_USER_DENIED_PAIRING:
            return Pairing::notPaired;
        default:
            return Pairing::pairedNeedsReconnect;
    }
}

/// Begins a session, which ends with the client. The library's handshake would do so too, but it has a phone that has
/// forgotten this machine ask its user for trust.
Pairing beginSession(const Client& client, const std::string& hostID) {
    return pairingOf(lockdownd_start_session(client.get(), hostID.c_str(), nullptr, nullptr));
}

}  // namespace

PhoneFacts presumeFacts(const AttachedPhone& phone, const std::optional<std::string>& hostID) {
    PhoneFacts facts;
    if (hostID) {
        facts.pairing =
            phone.attachment == Attachment::cable ? Pairing::pairedNeedsReconnect : Pairing::pairedNeedsConnect;
    }
    return facts;
}

PhoneFacts askPhone(const AttachedPhone& phone, const std::optional<std::string>& hostID) {
    PhoneFacts facts = presumeFacts(phone, hostID);
    const Device device = open(phone);
    const Client client = connect(device);
    const bool answers = client && readNames(client, facts);
    if (answers && hostID && phone.attachment == Attachment::cable) {
        facts.pairing = beginSession(client, *hostID);
    }
    return facts;
}

}  // namespace zorvane
