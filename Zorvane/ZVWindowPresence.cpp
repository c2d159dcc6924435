#include "Zorvane/ZVWindowPresence.hpp"

#include <array>

#include "Zorvane/Internal/DiscriminatedUnion.hpp"
#include "Zorvane/Internal/StreamingJSONReader.hpp"
#include "Zorvane/Internal/ZVWindowPresenceJSON.hpp"

namespace zorvane {

template <>
struct RawValues<ZVWindowPresence::TypeValue> {
    static constexpr auto names = std::to_array<std::string_view>({"present", "absent"});
};

template <>
struct JSONFields<ZVWindowInfo> {
    static void visit(auto& fields, auto& window) {
        fields("applicationID", window.applicationID);
        fields("applicationName", window.applicationName);
        fields("height", window.height);
        fields("time", window.time);
        fields("width", window.width);
        fields("windowID", window.windowID);
        fields("windowTitle", window.windowTitle);
        fields("x", window.x);
        fields("y", window.y);
    }
};

template <>
struct JSONFields<ZVWindowAbsence> {
    static void visit(auto& fields, auto& absence) { fields("time", absence.time); }
};

void writeJSON(JSONWriter& writer, const ZVWindowPresence& presence) {
    std::visit([&](const auto& payload) { encodeValue(writer, payload, presence.type()); }, presence.payload());
}

ZVWindowPresence readWindowPresence(const JSONReader& reader) {
    switch (decodeType<ZVWindowPresence::TypeValue>(reader)) {
        case ZVWindowPresence::TypeValue::present:
            return ZVWindowPresence(decodeSingleValueContainer<ZVWindowInfo>(reader));
        case ZVWindowPresence::TypeValue::absent:
            break;
    }
    return ZVWindowPresence(decodeSingleValueContainer<ZVWindowAbsence>(reader));
}

const ZVTime& ZVWindowPresence::time() const {
    return std::visit([](const auto& payload) -> const ZVTime& { return payload.time; }, payload_);
}

std::string ZVWindowPresence::toJSON() const {
    return compactJSON(*this);
}

ZVWindowPresence ZVWindowPresence::fromJSON(std::string_view json) {
    return readWindowPresence(JSONDocument(json).root());
}

std::vector<ZVWindowPresence> ZVWindowPresence::read(const std::filesystem::path& sideFile) {
    std::vector<ZVWindowPresence> presences;
    forEach(sideFile, [&presences](ZVWindowPresence presence) { presences.push_back(std::move(presence)); });
    return presences;
}

void ZVWindowPresence::forEach(const std::filesystem::path& sideFile,
                               const std::function<void(ZVWindowPresence)>& body) {
    forEachElementOfFile(sideFile, [&body](const JSONReader& element) { body(readWindowPresence(element)); });
}

}  // namespace zorvane
