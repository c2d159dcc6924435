#include "Zorvane/Platform/Linux/PipeWire/PipeWireCaptureCards.hpp"

#include <pipewire/keys.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>
#include <string_view>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireDeviceDescription.hpp"

namespace zorvane {
namespace {

constexpr std::string_view wordsOfCards[] = {"hdmi", "sdi", "capture", "grabber", "hdcap", "macrosilicon"};

/// The words of a text in lower case.
std::set<std::string> wordsOf(const std::string& text) {
    std::set<std::string> words;
    std::string word;
    for (const char letter : text + ' ') {
        if (std::isalnum(static_cast<unsigned char>(letter))) {
            word += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
        } else if (!word.empty()) {
            words.insert(word);
            word.clear();
        }
    }
    return words;
}

bool saysThatItIsACard(const PipeWireSource& source) {
    std::string names;
    for (const char* key : {PW_KEY_NODE_DESCRIPTION, PW_KEY_NODE_NICK, PW_KEY_DEVICE_DESCRIPTION,
                            PW_KEY_DEVICE_PRODUCT_NAME, PW_KEY_DEVICE_VENDOR_NAME}) {
        names += textOf(source, key) + ' ';
    }
    const auto words = wordsOf(names);
    return std::ranges::any_of(wordsOfCards, [&](std::string_view word) { return words.contains(std::string(word)); });
}

/// The place on the bus without the number of the interface, as in "pci-0000:00:14.0-usb-0:2" of "...:2:1.0"; empty for
/// what isn't on USB.
std::string placeOnUSB(const PipeWireSource& source) {
    const std::string path = textOf(source, PW_KEY_DEVICE_BUS_PATH);
    return path.find("usb-") == std::string::npos ? std::string() : path.substr(0, path.rfind(':'));
}

bool belongTogether(const PipeWireSource& camera, const PipeWireSource& microphone) {
    const std::string& device = rawValue(camera.node, PW_KEY_DEVICE_ID);
    if (!device.empty() && device == rawValue(microphone.node, PW_KEY_DEVICE_ID)) {
        return true;
    }
    const std::string place = placeOnUSB(camera);
    return !place.empty() && place == placeOnUSB(microphone) && saysThatItIsACard(camera);
}

}  // namespace

std::vector<PipeWireCardHalves> captureCardsIn(const std::vector<PipeWireSource>& sources) {
    std::vector<PipeWireCardHalves> cards;
    std::set<std::size_t> taken;
    for (std::size_t camera = 0; camera < sources.size(); ++camera) {
        for (std::size_t other = 0; sources[camera].mediaType == AVMediaType::video && other < sources.size();
             ++other) {
            const bool isFree = sources[other].mediaType == AVMediaType::audio && !taken.contains(other);
            if (isFree && belongTogether(sources[camera], sources[other])) {
                cards.push_back({.camera = camera, .microphone = other});
                taken.insert(other);
                break;
            }
        }
    }
    return cards;
}

}  // namespace zorvane
