// A display that can be recorded.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"

namespace zorvane {

/// One display as it was when it was asked for. Immutable; safe on any thread.
class ZVDisplay {
  public:
    /// The active displays, in ascending order of `displayID`. Asks the desktop anew each time and blocks for it.
    /// Throws a `std::exception` if the desktop can't be asked. Any thread.
    static std::vector<std::shared_ptr<ZVDisplay>> displays();

    /// The number by which the display is known also after it was unplugged, and by which a schema names it.
    std::uint32_t id() const { return id_; }
    /// What the desktop calls it now.
    std::uint32_t displayID() const { return displayID_; }
    bool isBuiltIn() const { return isBuiltIn_; }
    /// The name for people.
    const std::string& localizedName() const { return localizedName_; }
    bool isMain() const { return isMain_; }
    /// In points; the origin of all displays is the top left of the main one, y grows downward.
    const CGRect& frame() const { return frame_; }

    /// Two are equal if their ids are.
    bool operator==(const ZVDisplay& other) const { return id_ == other.id_; }

    /// One line for logs.
    std::string debugDescription() const;

  private:
    ZVDisplay() = default;

    std::uint32_t id_ = 0;
    std::uint32_t displayID_ = 0;
    bool isBuiltIn_ = false;
    std::string localizedName_;
    bool isMain_ = false;
    CGRect frame_;
};

}  // namespace zorvane
