// The switch that makes the screens of connected phones show up as capture devices.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zorvane {

using CMIOObjectID = std::uint32_t;
inline constexpr CMIOObjectID kCMIOObjectSystemObject = 1;

struct CMIOObjectPropertyAddress {
    std::uint32_t selector = 0;  ///< four letters as a number
    std::uint32_t scope = 0;
    std::uint32_t element = 0;
    bool operator==(const CMIOObjectPropertyAddress&) const = default;
};

class CMIOHardware {
  public:
    virtual ~CMIOHardware() = default;

    /// Sets a property from `size` bytes at `data`. Returns 0, or the system's error. Any thread.
    virtual std::int32_t setPropertyData(CMIOObjectID object, const CMIOObjectPropertyAddress& address,
                                         std::size_t size, const void* data) = 0;
};

}  // namespace zorvane
