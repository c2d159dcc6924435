// Follows the phones that are attached to this machine.
#pragma once

#include <memory>

#include "Zorvane/Platform/Linux/Phone/PhoneService.hpp"

namespace zorvane {

class PhoneRoster;

/// Has each phone asked that the service tells of, and keeps a roster of them. The roster counts as listed once the
/// phones that were there at the start have answered or taken too long. Any thread.
class PhoneWatch {
  public:
    explicit PhoneWatch(const std::shared_ptr<PhoneRoster>& roster);
    /// The phones leave the roster, soon after.
    ~PhoneWatch();

  private:
    class Core;

    const std::shared_ptr<Core> core_;
    const PhoneSubscription subscription_;
};

}  // namespace zorvane
