#include "Zorvane/ZVBundleInfo.hpp"

#include <array>

#include "Zorvane/Internal/JSONReader.hpp"
#include "Zorvane/Internal/JSONWriter.hpp"
#include "Zorvane/Internal/RawValues.hpp"

namespace zorvane {

template <>
struct RawValues<ZVBundleInfo::FileAssetType> {
    static constexpr auto names = std::to_array<std::string_view>(
        {"screen", "webcam", "audio", "mouse", "systemAudio", "appleDevice", "topWindow"});
};

namespace {

using FileAsset = ZVBundleInfo::FileAsset;
using FileAssetType = ZVBundleInfo::FileAssetType;

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
    return {readRawValue<FileAssetType>(reader.member("type")), reader.member("filename").string(),
            readRelated(reader.optionalMember("related"))};
}

}  // namespace

const ZVBundleInfo ZVBundleInfo::empty{};

std::string_view rawValue(FileAssetType type) {
    return rawValueOf(type);
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
