// Which desktop the library works on.
#pragma once

namespace zorvane {

enum class ZVPlatformKind {
    linuxDesktop,    ///< the desktop that the process runs in; the default
    virtualDesktop,  ///< one display in memory that shows something that moves, with a soft tone; needs no desktop
};

/// The choice of a desktop, for the whole process.
class ZVPlatform {
  public:
    /// From now on sources are those of this desktop. To be called before anything else of the library is used; what
    /// was asked or recorded before stays with the desktop it came from. Connects to nothing. Any thread.
    static void use(ZVPlatformKind kind);
};

}  // namespace zorvane
