#include "Zorvane/ZVBundleInfo.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "Zorvane/Internal/JSONReader.hpp"
#include "Zorvane/Internal/JSONWriter.hpp"

namespace zorvane {
namespace {

using FileAsset = ZVBundleInfo::FileAsset;
using FileAssetType = ZVBundleInfo::FileAssetType;

// In the order of the enumeration.
constexpr std::array<std::pair<FileAssetType, std::string_view>, 7> typeNames{{
    {FileAssetType::screen, "screen"},
    {FileAssetType::webcam, "webcam"},
    {FileAssetType::audio, "audio"},
    {FileAssetType::mouse, "mouse"},
    {FileAssetType::systemAudio, "systemAudio"},
    {FileAssetType::appleDevice, "appleDevice"},
    {FileAssetType::topWindow, "topWindow"},
}};

void writeAsset(JSONWriter& writer, const FileAsset& asset) {
    writer.beginObject();
    writer.key("filename");
    writer.string(asset.filename);
    if (asset.related) {
        writer.key("related");
        writer.beginArray();
        for (const std::string& filename : *asset.related) {
            writer.string(filename);
        }
        writer.endArray();
    }
    writer.key("type");
    writer.string(rawValue(asset.type));
    writer.endObject();
}

FileAssetType readType(const JSONReader& reader) {
    const std::string name = reader.string();
    const auto* const found = std::ranges::find(typeNames, name, &decltype(typeNames)::value_type::second);
    if (found == typeNames.end()) {
        reader.failUnknownValue();
    }
    return found->first;
}

std::optional<std::vector<std::string>> readRelated(const std::optional<JSONReader>& reader) {
    if (!reader) {
        return std::nullopt;
    }
    std::vector<std::string> filenames;
    for (const JSONReader& element : reader->elements()) {
        filenames.push_back(element.string());
    }
    return filenames;
}

FileAsset readAsset(const JSONReader& reader) {
    return {readType(reader.member("type")), reader.member("filename").string(),
            readRelated(reader.optionalMember("related"))};
}

}  // namespace

const ZVBundleInfo ZVBundleInfo::empty{};

std::string_view rawValue(FileAssetType type) {
    return typeNames.at(static_cast<std::size_t>(type)).second;
}

std::string ZVBundleInfo::encode() const {
    std::string bytes;
    JSONWriter writer(bytes, JSONWriter::Form::pretty);
    writer.beginObject();
    writer.key("files");
    writer.beginArray();
    for (const FileAsset& asset : files) {
        writeAsset(writer, asset);
    }
    writer.endArray();
    writer.key("version");
    writer.integer(version);
    writer.endObject();
    return bytes;
}

ZVBundleInfo ZVBundleInfo::decode(std::string_view bytes) {
    const JSONDocument document(bytes);
    const JSONReader root = document.root();
    ZVBundleInfo info;
    info.version = root.member("version").integer<std::int64_t>();
    for (const JSONReader& element : root.member("files").elements()) {
        info.files.push_back(readAsset(element));
    }
    return info;
}

}  // namespace zorvane
