#include "Zorvane/Platform/Linux/X11/XSession.hpp"

namespace zorvane {
namespace {

/// The connection if one has been made, else null.
std::shared_ptr<XConnection> made(const XConnection::Opening& opening) {
    const bool isDone = opening.valid() && opening.wait_for(std::chrono::seconds::zero()) == std::future_status::ready;
    return isDone ? opening.get() : nullptr;
}

bool isUnderWay(const XConnection::Opening& opening) {
    return opening.valid() && opening.wait_for(std::chrono::seconds::zero()) != std::future_status::ready;
}

}  // namespace

XQuery XSession::query() {
    return XQuery(XConnection::await(opening()));
}

XConnection::Opening XSession::opening() {
    const std::lock_guard lock(mutex_);
    if (!isUnderWay(opening_)) {
        const auto connection = made(opening_);
        if (!connection || !connection->isAlive()) {
            opening_ = XConnection::beginOpening();
        }
    }
    return opening_;
}

void XSession::reset() {
    const std::lock_guard lock(mutex_);
    if (const auto connection = made(opening_)) {
        connection->hangUp();
    }
    opening_ = {};
}

}  // namespace zorvane
