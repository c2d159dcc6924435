// Wakes a thread that waits for a phone.
#pragma once

#include "Zorvane/Platform/Linux/PipeWire/FileDescriptor.hpp"

namespace zorvane {

/// Set once and for all, or until it is cleared. Any thread.
class PhoneWakeup {
  public:
    PhoneWakeup();

    void set() const;
    void clear() const;
    bool isSet() const;
    /// Readable while it is set.
    int descriptor() const { return event_.get(); }

  private:
    const FileDescriptor event_;
};

}  // namespace zorvane
