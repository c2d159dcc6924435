// How loud a source of sound is.
#pragma once

#include <string>

namespace zorvane {

/// The loudness of about the last 100 ms, for a meter. Zero once a source has given nothing for 300 ms.
struct ZVSoundLevel {
    /// The kind of source, for people: "Microphone", "System Audio", "Application Audio", "Device" (a phone).
    std::string source;
    /// Which one: the microphone's or phone's name, the names of the applications; empty for all sound of the system.
    std::string name;
    /// The largest sample of all channels, as a fraction of full scale, 0 to 1.
    double peak = 0;
    /// The root of the mean square over all channels, on the same scale.
    double rms = 0;
};

}  // namespace zorvane
