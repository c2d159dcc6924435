// Being told that there is input at all.
#pragma once

#include <cstdint>
#include <memory>

namespace zorvane {

class XConnection;

/// XInput2 events of mouse and keyboard, whose content doesn't matter. A server that lacks XInput2 tells of nothing.
/// Raw events come for every device and every key, whoever has grabbed them; the pointer's jumps, which have no raw
/// event, are motions.
class InputWatch {
  public:
    explicit InputWatch(std::shared_ptr<XConnection> connection);

    /// Begins or ends to be told. No wait.
    void arm();
    void disarm();

  private:
    void select(std::uint32_t events);

    const std::shared_ptr<XConnection> connection_;
};

}  // namespace zorvane
