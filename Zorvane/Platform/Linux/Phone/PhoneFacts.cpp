#include "Zorvane/Platform/Linux/Phone/PhoneFacts.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "Zorvane/Platform/Linux/Phone/PhoneSocket.hpp"

namespace zorvane {
namespace {

using Pairing = AVCaptureDevicePairing;

// A phone's answers to a machine that its user hasn't confirmed, or no longer.
constexpr std::array<std::string_view, 4> distrust{"InvalidHostID", "MissingHostID", "PairingDialogResponsePending",
                                                   "UserDeniedPairing"};

PropertyList requestToPhone(std::string_view kind) {
    PropertyList request;
    request.set("Label", "zorvane").set("Request", kind);
    return request;
}

/// What this machine keeps of a phone that has trusted it; nothing if it never has.
std::optional<PropertyList> readPairRecord(PhoneSocket service, const std::string& udid) {
    PropertyList request;
    request.set("MessageType", "ReadPairRecord").set("PairRecordID", udid);
    const auto record = service.askService(request).data("PairRecordData");
    return record ? std::optional(PropertyList::parse(std::as_bytes(std::span(*record)))) : std::nullopt;
}

void readNames(PhoneSocket& phone, PhoneFacts& facts) {
    const PropertyList values = phone.askPhone(requestToPhone("GetValue")).dictionary("Value");
    facts.name = values.text("DeviceName").value_or(facts.name);
    facts.model = values.text("ProductType").value_or("");
}

/// Begins a session, which only a phone that trusts this machine allows. It ends with the connection.
Pairing beginSession(PhoneSocket& phone, const PropertyList& pairRecord) {
    PropertyList request = requestToPhone("StartSession");
    request.set("HostID", pairRecord.text("HostID").value_or(""));
    request.set("SystemBUID", pairRecord.text("SystemBUID").value_or(""));
    const PropertyList answer = phone.askPhone(request);
    if (answer.text("SessionID")) {
        return Pairing::notApplicable;
    }
    const std::string error = answer.text("Error").value_or("");
    return std::ranges::find(distrust, error) != distrust.end() ? Pairing::notPaired : Pairing::pairedNeedsReconnect;
}

}  // namespace

PhoneFacts askPhone(const std::filesystem::path& service, const AttachedPhone& phone, const PhoneWakeup& stop,
                    std::chrono::milliseconds longest) {
    const auto deadline = std::chrono::steady_clock::now() + longest;
    PhoneFacts facts;
    try {
        const auto pairRecord = readPairRecord(PhoneSocket(service, stop, deadline), phone.udid);
        if (pairRecord) {
            facts.pairing = Pairing::pairedNeedsReconnect;
        }
        PhoneSocket connection(service, stop, deadline);
        connection.connectToPhone(phone.deviceID);
        readNames(connection, facts);
        if (pairRecord) {
            facts.pairing = beginSession(connection, *pairRecord);
        }
    } catch (const PhoneConnectionError&) {
        // What is known so far stands.
    }
    if (phone.attachment == AttachedPhone::Attachment::network && facts.pairing != Pairing::notPaired) {
        facts.pairing = Pairing::pairedNeedsConnect;
    }
    return facts;
}

}  // namespace zorvane
