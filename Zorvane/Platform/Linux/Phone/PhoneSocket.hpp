// A connection to the service that talks to phones over their cables.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <vector>

#include "Zorvane/Platform/Linux/Phone/PropertyList.hpp"
#include "Zorvane/Platform/Linux/PipeWire/FileDescriptor.hpp"

namespace zorvane {

class PhoneWakeup;

/// The service or the phone hung up, said nothing in time, or said what makes no sense; or the wait was ended.
class PhoneConnectionError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Every call may throw a `PhoneConnectionError` and blocks until it is done, the deadline has passed, or `stop` is
/// set. One thread.
class PhoneSocket {
  public:
    using Deadline = std::chrono::steady_clock::time_point;
    static constexpr Deadline never = Deadline::max();

    /// Where the service listens: the path in `USBMUXD_SOCKET_ADDRESS` ("UNIX:" and a path), else the usual one.
    static std::filesystem::path servicePath();

    /// Connects to the service. `stop` outlives the socket.
    PhoneSocket(const std::filesystem::path& path, const PhoneWakeup& stop, Deadline deadline);

    int descriptor() const { return socket_.get(); }
    void setDeadline(Deadline deadline) { deadline_ = deadline; }

    /// One message from the service.
    PropertyList receiveFromService();
    /// A request to the service and its answer.
    PropertyList askService(const PropertyList& request);
    /// From here on the connection leads to a phone's own service; throws if the phone can't be reached.
    void connectToPhone(std::uint64_t deviceID);
    /// A request to the phone and its answer.
    PropertyList askPhone(const PropertyList& request);

  private:
    void send(std::span<const std::byte> bytes);
    std::vector<std::byte> receive(std::size_t size);
    void wait(short events);

    FileDescriptor socket_;
    const PhoneWakeup& stop_;
    Deadline deadline_;
};

}  // namespace zorvane
