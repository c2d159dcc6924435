#include "Zorvane/Platform/Linux/PipeWire/PipeWireConnection.hpp"

#include <sys/epoll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

constexpr std::chrono::milliseconds shortestPause{10};
constexpr unsigned mostDoublings = 9;  // the pauses up to that one add up to 10 s

timespec pauseAfter(unsigned attempts) {
    const std::chrono::milliseconds pause = shortestPause * (1u << std::min(attempts, mostDoublings));
    const auto seconds = std::chrono::floor<std::chrono::seconds>(pause);
    return {seconds.count(), std::chrono::nanoseconds(pause - seconds).count()};
}

/// What the loop calls for an event or a timer.
template <void (PipeWireConnection::*method)()>
void call(void* self, std::uint64_t) {
    (static_cast<PipeWireConnection*>(self)->*method)();
}

}  // namespace

PipeWireConnection::PipeWireConnection(pw_loop& loop, std::filesystem::path socket)
    : loop_(loop),
      socketPath_(std::move(socket)),
      timer_(spa_loop_utils_add_timer(loop.utils, call<&PipeWireConnection::tryToConnect>, this), {&loop}),
      end_(spa_loop_utils_add_event(loop.utils, call<&PipeWireConnection::serverEnded>, this), {&loop}) {
    watchSocket();
    tryToConnect();
}

PipeWireConnection::~PipeWireConnection() {
    hangUp();
}

void PipeWireConnection::add(const std::shared_ptr<PipeWireClient>& client) {
    clients_.push_back(client);
    core_ ? client->connected(*core_) : client->disconnected();
}

void PipeWireConnection::remove(const std::shared_ptr<PipeWireClient>& client) {
    if (std::erase(clients_, client) > 0) {
        client->disconnected();
    }
}

void PipeWireConnection::watchSocket() {
    watch_.emplace(socketPath_);
    const auto onReadable = [](void* self, int, std::uint32_t) {
        static_cast<PipeWireConnection*>(self)->socketChanged();
    };
    watchSource_ = {spa_loop_utils_add_io(loop_.utils, watch_->descriptor(), EPOLLIN, false, onReadable, this),
                    {&loop_}};
}

void PipeWireConnection::socketChanged() {
    if (watch_->takeChanges()) {
        attempts_ = 0;
        tryToConnect();
    }
}

void PipeWireConnection::tryToConnect() {
    PipeWireConnecting connecting = connectToPipeWire(socketPath_);
    if (connecting.socket) {
        adopt(std::move(connecting.socket));
    } else if (connecting.error == EAGAIN || (connecting.error == ECONNREFUSED && attempts_ <= mostDoublings)) {
        tryAgainAfterPause();
    }
}

void PipeWireConnection::tryAgainAfterPause() {
    timespec pause = pauseAfter(attempts_++);
    spa_loop_utils_update_timer(loop_.utils, timer_.get(), &pause, nullptr, false);
}

void PipeWireConnection::adopt(FileDescriptor socket) {
    if (!context_) {
        // Asks the system for a real-time priority for the thread that sound comes on.
        context_.reset(pw_context_new(&loop_, pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr), 0));
    }
    core_.reset(context_ ? pw_context_connect_fd(context_.get(), socket.release(), nullptr, 0) : nullptr);
    if (!core_) {
        const int error = errno;
        Logger::forFile().error("PipeWire can't be used", [&] {
            return LogMetadata{{"error", NSError::posix(error, "connect to PipeWire").localizedDescription()}};
        });
        return;
    }
    stopLooking();
    ++attempts_;
    static const pw_core_events events{.version = PW_VERSION_CORE_EVENTS, .done = onDone, .error = onError};
    pw_core_add_listener(core_.get(), coreHook_.get(), &events, this);
    pw_core_sync(core_.get(), PW_ID_CORE, 0);
    for (const auto& client : clients_) {
        client->connected(*core_);
    }
}

void PipeWireConnection::stopLooking() {
    watchSource_.reset();
    watch_.reset();
    spa_loop_utils_update_timer(loop_.utils, timer_.get(), nullptr, nullptr, false);
}

void PipeWireConnection::onDone(void* self, std::uint32_t, int) {
    static_cast<PipeWireConnection*>(self)->attempts_ = 0;
}

void PipeWireConnection::onError(void* self, std::uint32_t id, int, int result, const char*) {
    const auto& connection = *static_cast<PipeWireConnection*>(self);
    // Other errors are of objects that went while they were asked for something.
    if (id == PW_ID_CORE && result == -EPIPE) {
        spa_loop_utils_signal_event(connection.loop_.utils, connection.end_.get());
    }
}

void PipeWireConnection::serverEnded() {
    hangUp();
    watchSocket();
    // One who ends before the first answer may do so each time.
    attempts_ == 0 ? tryToConnect() : tryAgainAfterPause();
}

void PipeWireConnection::hangUp() {
    if (core_) {
        for (const auto& client : clients_) {
            client->disconnected();
        }
        coreHook_.remove();
        core_.reset();
    }
}

}  // namespace zorvane
