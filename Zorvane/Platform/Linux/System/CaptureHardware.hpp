// Linux has no switch for the screens of phones: they are always on.
#pragma once

#include "Zorvane/Platform/CoreMediaIO/CMIOHardware.hpp"

namespace zorvane {

class CaptureHardware final : public CMIOHardware {
  public:
    std::int32_t setPropertyData(CMIOObjectID, const CMIOObjectPropertyAddress&, std::size_t, const void*) override {
        return 0;
    }
};

}  // namespace zorvane
