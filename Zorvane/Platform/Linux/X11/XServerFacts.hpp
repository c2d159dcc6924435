// What there is to know of the X server before anything is recorded.
#pragma once

#include <cstdint>
#include <string>

namespace zorvane {

class XSession;

struct XServerFacts {
    enum class Reach : std::uint8_t {
        reachable,
        unnamed,     ///< DISPLAY isn't set
        absent,      ///< nothing listens under that name on this machine
        refused,     ///< it listens on this machine, and doesn't let this process in
        silent,      ///< it listens, and doesn't answer
        outOfReach,  ///< it is on another machine, and somehow doesn't come to terms with this process
    };

    Reach reach = Reach::unnamed;
    std::string name;  ///< as in ":0"

    // Of a reachable server: what it offers.
    bool hasDamage = false;
    bool hasXFixes = false;
    bool hasRecord = false;
    bool hasXTest = false;
};

/// Asks the server that the environment names. Waits for it, for seconds at most.
XServerFacts readXServerFacts(XSession& session);

}  // namespace zorvane
