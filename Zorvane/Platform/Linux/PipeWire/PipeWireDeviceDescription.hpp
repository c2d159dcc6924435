// From PipeWire's words for a device to the library's.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Zorvane/Platform/AVFoundation/AVCaptureDevice.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSources.hpp"

namespace zorvane {

/// What never changes of a device.
struct PipeWireDeviceDescription {
    std::string uniqueID;
    std::string localizedName;
    std::string modelID;
    std::string manufacturer;
    AVMediaType mediaType = AVMediaType::audio;
    AVCaptureDeviceType deviceType = AVCaptureDeviceType::external;
    AVCaptureDeviceTransportType transportType = AVCaptureDeviceTransportType::unknown;

    bool operator==(const PipeWireDeviceDescription&) const = default;
};

/// A property of the node, else of the hardware behind it.
std::string textOf(const PipeWireSource& source, std::string_view key);

PipeWireDeviceDescription describeDevice(const PipeWireSource& source, std::string uniqueID);

/// Gives each node its device's id.
///
/// The id is the node's name. Session managers make that of the bus path, vendor, product and serial number, so it is
/// the same after unplugging and after restarts of PipeWire and of the machine, and they tell devices apart that are
/// alike. Where two nodes have one name all the same, the one that came first has it as its id, and the other a longer
/// one, with its serial number or its path if there is one, for as long as it is there.
class PipeWireDeviceIDs {
  public:
    /// One id for each source, in their order.
    std::vector<std::string> assign(const std::vector<PipeWireSource>& sources);

  private:
    using Node = std::pair<std::uint32_t, std::string>;  // its number and its name

    static Node keyOf(const PipeWireSource& source);

    std::map<Node, std::string> given_;  // to the nodes of the last time
};

}  // namespace zorvane
