// A PipeWire of a test's own.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "tests/Support/TemporaryDirectory.hpp"

namespace zorvane {

/// Names a place for PipeWire's socket in the environment, where nothing runs at first. Without devices and without a
/// session manager, which means that nobody links but who is asked to. Ends what it started and takes the environment
/// back at the end.
class PrivatePipeWire {
  public:
    PrivatePipeWire();
    PrivatePipeWire(const PrivatePipeWire&) = delete;
    PrivatePipeWire& operator=(const PrivatePipeWire&) = delete;
    ~PrivatePipeWire();

    std::filesystem::path runtimeDirectory() const { return directory_.path() / "runtime"; }
    std::filesystem::path socket() const { return runtimeDirectory() / "pipewire-0"; }

    /// Starts the service; it listens a moment later.
    void start();
    /// Starts it and waits until it listens. Throws `std::runtime_error` if it doesn't within 20 s.
    void startAndWait();
    /// Ends it at once, as a crash would; its socket stays behind.
    void kill();
    /// Ends it in good order.
    void stop();
    /// Makes it hang until `resume`.
    void suspend();
    void resume();

  private:
    void end(int signal);

    TemporaryDirectory directory_;
    std::map<std::string, std::optional<std::string>> outerEnvironment_;
    pid_t process_ = -1;
};

}  // namespace zorvane
