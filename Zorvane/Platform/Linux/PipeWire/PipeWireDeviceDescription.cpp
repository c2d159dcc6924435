#include "Zorvane/Platform/Linux/PipeWire/PipeWireDeviceDescription.hpp"

#include <pipewire/keys.h>

#include <initializer_list>
#include <set>

namespace zorvane {

std::string textOf(const PipeWireSource& source, std::string_view key) {
    std::string text = textValue(source.node, key);
    return text.empty() ? textValue(source.card, key) : text;
}

namespace {

std::string firstTextOf(const PipeWireSource& source, std::initializer_list<std::string_view> keys) {
    for (const std::string_view key : keys) {
        if (std::string text = textOf(source, key); !text.empty()) {
            return text;
        }
    }
    return {};
}

/// The vendor's and the product's number where the bus has such, as in "0x046d:0x0825", else the product's name.
std::string modelOf(const PipeWireSource& source) {
    const std::string product = textOf(source, PW_KEY_DEVICE_PRODUCT_ID);
    if (product.empty()) {
        return textOf(source, PW_KEY_DEVICE_PRODUCT_NAME);
    }
    const std::string vendor = textOf(source, PW_KEY_DEVICE_VENDOR_ID);
    return vendor.empty() ? product : vendor + ':' + product;
}

/// Whether the firmware or the driver says that it is a part of the machine.
bool isInternal(const PipeWireSource& source) {
    const std::string location = textOf(source, "api.libcamera.location");
    return textOf(source, PW_KEY_DEVICE_FORM_FACTOR) == "internal" || location == "front" || location == "back";
}

AVCaptureDeviceTransportType transportOf(const PipeWireSource& source) {
    using enum AVCaptureDeviceTransportType;
    const std::string api = textOf(source, PW_KEY_DEVICE_API);
    const std::string bus = textOf(source, PW_KEY_DEVICE_BUS);
    if (isInternal(source)) {
        return builtIn;  // many are on a USB of their own inside
    }
    if (bus == "bluetooth" || api == "bluez5") {
        return bluetooth;
    }
    if (bus == "usb") {
        return usb;
    }
    if (bus == "pci") {
        return builtIn;
    }
    return api.empty() ? virtualDevice : unknown;
}

AVCaptureDeviceType deviceTypeOf(AVMediaType mediaType, AVCaptureDeviceTransportType transport) {
    if (transport != AVCaptureDeviceTransportType::builtIn) {
        return AVCaptureDeviceType::external;
    }
    return mediaType == AVMediaType::audio ? AVCaptureDeviceType::builtInMicrophone
                                           : AVCaptureDeviceType::builtInWideAngleCamera;
}

std::string nodeNameOf(const PipeWireSource& source) {
    std::string name = firstTextOf(source, {PW_KEY_NODE_NAME, PW_KEY_OBJECT_PATH});
    return name.empty() ? "unnamed" : name;
}

std::string freeID(const PipeWireSource& source, const std::set<std::string>& taken) {
    std::string id = nodeNameOf(source);
    if (!taken.contains(id)) {
        return id;
    }
    const std::string place = firstTextOf(source, {PW_KEY_DEVICE_SERIAL, PW_KEY_DEVICE_BUS_PATH, PW_KEY_OBJECT_PATH});
    if (!place.empty()) {
        id += '#' + place;
    }
    std::string numbered = id;
    for (int number = 2; taken.contains(numbered); ++number) {
        numbered = id + '#' + std::to_string(number);
    }
    return numbered;
}

}  // namespace

PipeWireDeviceDescription describeDevice(const PipeWireSource& source, std::string uniqueID) {
    const AVCaptureDeviceTransportType transport = transportOf(source);
    std::string name =
        firstTextOf(source, {PW_KEY_NODE_DESCRIPTION, PW_KEY_NODE_NICK, PW_KEY_DEVICE_DESCRIPTION, PW_KEY_NODE_NAME});
    return {.uniqueID = std::move(uniqueID),
            .localizedName = std::move(name),
            .modelID = modelOf(source),
            .manufacturer = textOf(source, PW_KEY_DEVICE_VENDOR_NAME),
            .mediaType = source.mediaType,
            .deviceType = deviceTypeOf(source.mediaType, transport),
            .transportType = transport};
}

std::vector<std::string> PipeWireDeviceIDs::assign(const std::vector<PipeWireSource>& sources) {
    std::map<Node, std::string> given;
    std::set<std::string> taken;
    for (const PipeWireSource& source : sources) {
        if (const auto known = given_.find(keyOf(source)); known != given_.end()) {
            taken.insert(known->second);
            given.insert(*known);
        }
    }
    std::vector<std::string> ids;
    for (const PipeWireSource& source : sources) {
        const auto [entry, isNew] = given.try_emplace(keyOf(source));
        if (isNew) {
            entry->second = freeID(source, taken);
            taken.insert(entry->second);
        }
        ids.push_back(entry->second);
    }
    given_ = std::move(given);
    return ids;
}

PipeWireDeviceIDs::Node PipeWireDeviceIDs::keyOf(const PipeWireSource& source) {
    return {source.nodeID, nodeNameOf(source)};
}

}  // namespace zorvane
