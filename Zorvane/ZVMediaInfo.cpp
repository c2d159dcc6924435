#include "Zorvane/ZVMediaInfo.hpp"

#include "Zorvane/Platform/AVFoundation/AVMediaReading.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane {

ZVMediaInfo ZVMediaInfo::read(const std::filesystem::path& path) {
    return Platform::current()->mediaReading->read(path);
}

}  // namespace zorvane
