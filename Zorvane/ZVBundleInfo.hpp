// The manifest of a bundle: which files a recording produced and how they belong together.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zorvane {

/// What "zorvane.json" at the top of a bundle directory holds.
struct ZVBundleInfo {
    enum class FileAssetType {
        screen,       ///< a display or a window crop
        webcam,       ///< a camera
        audio,        ///< a microphone
        mouse,        ///< the events of mouse and keyboard
        systemAudio,  ///< the sound of the system or of applications
        appleDevice,  ///< a connected phone or tablet
        topWindow,    ///< which window was frontmost, and when
    };

    /// One file of the bundle.
    struct FileAsset {
        FileAssetType type;
        /// Relative to the bundle directory.
        std::string filename;
        /// Names of assets that belong to this one, such as the side files of a screen; absent if there are none.
        std::optional<std::vector<std::string>> related = std::nullopt;

        bool operator==(const FileAsset&) const = default;
    };

    /// Always 1 in what this library writes; kept and not checked on reading.
    std::int64_t version = 1;
    /// In the order of the schema. A segmented output has no entry.
    std::vector<FileAsset> files;

    /// Version 1 and no files: stands for the manifest of a recording that was discarded or never prepared.
    static const ZVBundleInfo empty;

    /// The bytes of the manifest: UTF-8, keys in ascending order, indented by two spaces, no line feed at the end.
    std::string encode() const;
    /// Reads what `encode` writes, in any layout. Throws a `std::exception` that names the path of what is wrong, such
    /// as `files[1].type: unknown value "x"`; an unknown type fails the whole manifest.
    static ZVBundleInfo decode(std::string_view bytes);

    bool operator==(const ZVBundleInfo&) const = default;
};

/// The name of a type as the manifest holds it, such as "systemAudio".
std::string_view rawValue(ZVBundleInfo::FileAssetType type);

}  // namespace zorvane
