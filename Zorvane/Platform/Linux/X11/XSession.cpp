#include "Zorvane/Platform/Linux/X11/XSession.hpp"

#include "Zorvane/Platform/Linux/X11/XConnection.hpp"

namespace zorvane {

std::shared_ptr<XConnection> XSession::connection() {
    const std::lock_guard opening(opening_);
    {
        const std::lock_guard lock(mutex_);
        if (connection_ && connection_->isAlive()) {
            return connection_;
        }
    }
    auto opened = XConnection::open();
    const std::lock_guard lock(mutex_);
    connection_ = opened;
    return opened;
}

void XSession::reset() {
    const std::lock_guard lock(mutex_);
    if (connection_) {
        connection_->hangUp();
        connection_.reset();
    }
}

}  // namespace zorvane
