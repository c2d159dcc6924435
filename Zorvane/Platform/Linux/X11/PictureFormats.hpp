// How RENDER is to understand the pixels of windows.
#pragma once

#include <cstdint>
#include <unordered_map>

namespace zorvane {

class XConnection;

/// RENDER's number for a form of pixels; 0 for none.
struct PictureFormat {
    std::uint32_t number = 0;
    bool hasAlpha = false;
};

/// The server's list of visuals and their formats, read once.
class PictureFormats {
  public:
    /// One round trip.
    explicit PictureFormats(const XConnection& connection);

    PictureFormat ofVisual(std::uint32_t visual) const;

  private:
    std::unordered_map<std::uint32_t, PictureFormat> byVisual_;
};

}  // namespace zorvane
