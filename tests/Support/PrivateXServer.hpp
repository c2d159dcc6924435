// An X server of a test's own.
#pragma once

#include <optional>
#include <string>

namespace zorvane {

/// A display number that no other test on this machine has while this object lives, and no server chooses for itself.
class ReservedDisplay {
  public:
    ReservedDisplay();
    ReservedDisplay(const ReservedDisplay&) = delete;
    ReservedDisplay& operator=(const ReservedDisplay&) = delete;
    ~ReservedDisplay();

    std::string name() const { return ":" + std::to_string(number_); }

  private:
    int number_;
    const int socket_;
};

/// Starts an X server without a screen and makes it the environment's; takes both back at the end. Its name stays its
/// own while it is killed. Throws `std::runtime_error` if it doesn't come up.
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
    void start();
    void end(int signal);

    const std::string screen_;
    const std::string withoutExtension_;
    const ReservedDisplay display_;
    const std::string name_ = display_.name();
    int process_ = -1;
    std::optional<std::string> previousName_;
};

}  // namespace zorvane
