// Short random identifiers for recordings, traces, schema items and recorders.
#pragma once

#include <string>

namespace zorvane {

class ShortID {
  public:
    /// Five characters, each drawn evenly from the letters a to z, A to Z and the digits, by the system's random
    /// generator. Throws an `NSError` if that fails.
    static std::string make();
};

}  // namespace zorvane
