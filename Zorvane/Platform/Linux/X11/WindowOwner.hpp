// Which process a window belongs to.
#pragma once

#include <cstdint>
#include <string_view>

#include "Zorvane/Platform/Linux/X11/XProperty.hpp"

namespace zorvane {

class XConnection;
struct WindowAtoms;

/// A window says itself which process on which machine it belongs to. It is believed if it names this machine; the pid
/// of another machine, or of a window that names none, may belong to anybody here. Then the server is asked which
/// process is connected: for a remote program that is what carries its connection, such as ssh.
///
/// The questions are sent when the object is made, and must be answered once.
class WindowOwnerQuery {
  public:
    WindowOwnerQuery(const XConnection& connection, const WindowAtoms& atoms, std::uint32_t window);

    /// Waits for the server. 0 when nobody can tell.
    std::int32_t processID() const;

  private:
    std::int32_t connectedProcess() const;

    const XConnection* connection_;
    XPropertyQuery claimedProcess_;
    XPropertyQuery claimedMachine_;
    bool asksServer_;
    unsigned int clientQuery_ = 0;
};

/// The same in one call.
std::int32_t windowOwner(const XConnection& connection, const WindowAtoms& atoms, std::uint32_t window);

/// Whether `claimed` names the machine `host`; either may be the short form of the other's full name. Pure.
bool isSameMachine(std::string_view claimed, std::string_view host);

}  // namespace zorvane
