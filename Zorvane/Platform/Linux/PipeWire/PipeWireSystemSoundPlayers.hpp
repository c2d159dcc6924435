// Which applications play sound.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zorvane {

class PipeWireSession;

/// A process with a stream of sound, which may be silent at the moment.
struct PipeWireSystemSoundPlayer {
    std::int32_t processID = 0;
    std::string applicationName;  ///< as it calls itself; may be empty
    std::string program;          ///< the name of its file; may be empty

    bool operator==(const PipeWireSystemSoundPlayer&) const = default;
};

/// Follows them from the first question on.
class PipeWireSystemSoundPlayers {
  public:
    using Handler = std::function<void(std::vector<PipeWireSystemSoundPlayer> players)>;

    explicit PipeWireSystemSoundPlayers(std::shared_ptr<PipeWireSession> session);
    PipeWireSystemSoundPlayers(const PipeWireSystemSoundPlayers&) = delete;
    PipeWireSystemSoundPlayers& operator=(const PipeWireSystemSoundPlayers&) = delete;
    /// Questions that wait for PipeWire are answered.
    ~PipeWireSystemSoundPlayers();

    /// Calls the handler once, each process once, in the order in which they came: inside this call, or on another
    /// thread as soon as PipeWire has told, and after two seconds in any case. There are none without PipeWire.
    void get(Handler handler);

  private:
    class State;

    const std::shared_ptr<State> state_;
};

}  // namespace zorvane
