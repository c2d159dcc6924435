// A window manager of a test's own.
#pragma once

namespace zorvane {

/// Starts openbox on the server that DISPLAY names, which must have none yet, and returns when it manages windows.
/// Ends it when it goes. Throws `std::runtime_error` if it doesn't come up.
class PrivateWindowManager {
  public:
    PrivateWindowManager();
    PrivateWindowManager(const PrivateWindowManager&) = delete;
    PrivateWindowManager& operator=(const PrivateWindowManager&) = delete;
    ~PrivateWindowManager();

  private:
    int process_ = -1;
};

}  // namespace zorvane
