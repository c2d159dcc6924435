#include "Zorvane/Platform/Linux/PipeWire/PipeWireSession.hpp"

#include <utility>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireConnection.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireLoop.hpp"
#include "Zorvane/Platform/Linux/PipeWire/PipeWireSocket.hpp"

namespace zorvane {

PipeWireSession::PipeWireSession() = default;
PipeWireSession::~PipeWireSession() = default;

void PipeWireSession::add(std::shared_ptr<PipeWireClient> client) {
    MutexLock lock(mutex_);
    if (PipeWireLoop* running = loop()) {
        running->async([client = std::move(client)](PipeWireConnection& connection) { connection.add(client); });
        return;
    }
    lock.unlock();
    client->disconnected();
}

void PipeWireSession::remove(std::shared_ptr<PipeWireClient> client) {
    const MutexLock lock(mutex_);
    if (loop_) {
        loop_->async([client = std::move(client)](PipeWireConnection& connection) { connection.remove(client); });
    }
}

PipeWireLoop* PipeWireSession::loop() {
    if (!loop_) {
        try {
            loop_ = std::make_unique<PipeWireLoop>([path = pipeWireSocketPath()](pw_loop& loop) {
                return std::make_shared<PipeWireConnection>(loop, path);
            });
        } catch (const NSError& error) {
            Logger::forFile().error("PipeWire can't be used", [&] { return LogMetadata{{"error", error.what()}}; });
        }
    }
    return loop_.get();
}

}  // namespace zorvane
