// Every event of mouse and keyboard, as the server's RECORD extension tells of them.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Zorvane/Platform/Linux/X11/Input/DeviceEvent.hpp"
#include "Zorvane/Platform/Linux/X11/Input/ServerTime.hpp"

namespace zorvane {

class XConnection;

/// What arrived at once.
struct RecordedInput {
    std::vector<DeviceEvent> events;  ///< in the order in which they happened
    std::uint32_t marks = 0;          ///< how many marks lie among or behind them
    bool isEnd = false;               ///< nothing will come any more
};

/// Takes two connections: requests go to `control`, and `data` is the recording's alone. The server keeps what it
/// records to itself until 1 KB is full or it has something to send to any client; `expedite` gives it that.
class RecordStream {
  public:
    /// Begins to record, in two round trips. Throws `NSError`, with a text that tells the user what to do.
    RecordStream(std::shared_ptr<XConnection> control, std::shared_ptr<XConnection> data);

    /// The server's clock as it was compared when the recording began.
    const ServerTime& serverTime() const { return serverTime_; }

    /// Takes what has arrived, without a wait. One thread.
    RecordedInput take();

    /// Makes the server send what it has recorded by then. Any thread; no wait but for the socket to take the request.
    void expedite();
    /// The same, with a mark recorded behind all that happened up to then. Any thread.
    void mark();

  private:
    std::uint32_t createContext() const;
    ServerTime enableContext();

    const std::shared_ptr<XConnection> control_;
    const std::shared_ptr<XConnection> data_;
    const std::uint32_t context_;
    unsigned int enabling_ = 0;  ///< the request that all replies belong to
    ServerTime serverTime_;
};

}  // namespace zorvane
