// Numbers by which displays are known again.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace zorvane {

/// What identifies a display: the connector it hangs on, and its EDID block (empty when it has none).
struct DisplayIdentity {
    std::string connector;
    std::vector<std::uint8_t> edid;

    auto operator<=>(const DisplayIdentity&) const = default;
};

/// One number per display, never 0 and all different: the panel's own serial number where it has one that no other
/// display shares, else a number derived from EDID and connector. The same displays give the same numbers, in
/// whatever order they are listed. Pure.
std::vector<std::uint32_t> displaySerialNumbers(const std::vector<DisplayIdentity>& displays);

/// Numbers that stay as they are while displays come and go: without a memory, the second of two panels that bear the
/// same serial number would take the first one's number away. Any thread.
class DisplayNumbering {
  public:
    /// The process's one.
    static DisplayNumbering& shared();

    /// `displaySerialNumbers`, except that a display that has been here before gets the number it had, if no other
    /// display has it now.
    std::vector<std::uint32_t> assign(const std::vector<DisplayIdentity>& displays);

  private:
    std::mutex mutex_;
    std::map<DisplayIdentity, std::uint32_t> known_;  // guarded by mutex_
    std::set<DisplayIdentity> present_;               // guarded by mutex_; as of the last call
};

}  // namespace zorvane
