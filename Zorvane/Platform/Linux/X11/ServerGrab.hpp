// The server for oneself.
#pragma once

#include <xcb/xcb.h>

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"

namespace zorvane {

/// No other program's requests are dealt with while one exists. For moments only: the desktop stands still.
class ServerGrab {
  public:
    explicit ServerGrab(XConnection& connection) : connection_(connection) {
        xcb_grab_server(connection.get());
        xcb_flush(connection.get());
    }
    ServerGrab(const ServerGrab&) = delete;
    ServerGrab& operator=(const ServerGrab&) = delete;
    ~ServerGrab() {
        xcb_ungrab_server(connection_.get());
        xcb_flush(connection_.get());
    }

  private:
    XConnection& connection_;
};

}  // namespace zorvane
