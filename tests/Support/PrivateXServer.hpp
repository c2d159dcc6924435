// An X server of a test's own.
#pragma once

#include <optional>
#include <string>

namespace zorvane {

/// Starts an X server without a screen and makes it the environment's; takes both back at the end. Throws
/// `std::runtime_error` if it doesn't come up.
class PrivateXServer {
  public:
    /// `withoutExtension` is the name of an extension to leave out, as in "RANDR".
    explicit PrivateXServer(const std::string& screen = "640x480x24", const std::string& withoutExtension = {});
    PrivateXServer(const PrivateXServer&) = delete;
    PrivateXServer& operator=(const PrivateXServer&) = delete;
    ~PrivateXServer();

    const std::string& name() const { return name_; }

    /// Ends it at once, as a crash would.
    void kill();
    /// Starts it again under the same name, after `kill`.
    void restart();
    /// Makes it hang until `resume`.
    void suspend();
    void resume();

  private:
    void start(const std::string& name);
    void end(int signal);

    const std::string screen_;
    const std::string withoutExtension_;
    int process_ = -1;
    std::string name_;
    std::optional<std::string> previousName_;
};

}  // namespace zorvane
