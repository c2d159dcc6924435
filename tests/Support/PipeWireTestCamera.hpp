// A camera that says when each of its pictures was taken.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Zorvane/Platform/Linux/PipeWire/PipeWireVideoFormat.hpp"

namespace zorvane {

/// A node of the class `Video/Source` on the PipeWire of the environment, which numbers its pictures (`TestPicture`).
/// The first picture that is taken in each second of the host clock is a flash, unless told otherwise. Any thread.
/// Throws `std::runtime_error`.
class PipeWireTestCamera {
  public:
    enum class Stamp : std::uint8_t {
        hostClock,  ///< as the kernel's drivers do
        ownClock,   ///< from a start of its own
        none,
    };
    enum class Memory : std::uint8_t {
        server,  ///< files of memory that PipeWire makes
        device,  ///< what the camera calls its own, as one with a driver does
    };

    struct Settings {
        std::string name;
        std::vector<PipeWireVideoFormat> formats;  ///< that it offers, each of a known rate
        bool offersH264 = false;                   ///< too; it doesn't deliver in it
        std::map<std::string, std::string> properties = {};
        std::chrono::nanoseconds latency{0};  ///< from when a picture is taken to when it is given away
        Stamp stamp = Stamp::hostClock;
        Memory memory = Memory::server;
        /// Whether a picture that is taken at a moment is a flash. Called on PipeWire's thread.
        std::function<bool(std::chrono::nanoseconds time)> isFlash = nullptr;
    };

    /// What is wrong with a picture.
    enum class Fault : std::uint8_t { none, cutOff, outsideMemory, backwards, narrowRows, markedBroken, gap, garbage };

    struct Taken {
        std::uint32_t number = 0;
        std::chrono::nanoseconds time{0};  ///< of the host clock
        Fault fault = Fault::none;
    };

    /// Returns when the server lists it.
    explicit PipeWireTestCamera(Settings settings);
    PipeWireTestCamera(const PipeWireTestCamera&) = delete;
    PipeWireTestCamera& operator=(const PipeWireTestCamera&) = delete;
    ~PipeWireTestCamera();

    /// From here on it offers these alone.
    void setFormats(std::vector<PipeWireVideoFormat> formats);
    /// From the next picture on.
    void setFault(Fault fault);

    /// All that it gave away so far.
    std::vector<Taken> taken() const;
    /// Whether somebody takes its pictures at this moment.
    bool isStreaming() const;

  private:
    struct State;

    const std::unique_ptr<State> state_;
};

}  // namespace zorvane
