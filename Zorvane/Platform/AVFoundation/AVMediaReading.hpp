// The entry to reading media: what a file holds.
#pragma once

#include <filesystem>

#include "Zorvane/ZVMediaInfo.hpp"

namespace zorvane {

/// One per platform. Any thread may call.
class AVMediaReading {
  public:
    virtual ~AVMediaReading() = default;

    /// What the file at `url` holds. Throws `NSError` when it can't be read or is no media file.
    virtual ZVMediaInfo read(const std::filesystem::path& url) = 0;
};

}  // namespace zorvane
