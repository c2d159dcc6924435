// Which sources the user recorded with last.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Platform/Foundation/NSUserDefaults.hpp"
#include "Zorvane/ZVSchemaItem.hpp"

namespace zorvane {

class Executor;

/// Remembers sources over all recordings of all processes of the user, without a limit, so that lists can put them
/// first. Any thread; reading and updating use the disk.
class ZVUserPreferred : public std::enable_shared_from_this<ZVUserPreferred> {
  public:
    /// The platform's one.
    static std::shared_ptr<const ZVUserPreferred> shared();

    explicit ZVUserPreferred(std::shared_ptr<NSUserDefaults> defaults);

    // By id, the last one used first.
    std::vector<std::string> cameraIDs() const;
    std::vector<std::string> microphoneIDs() const;
    std::vector<std::uint32_t> displayIDs() const;

    // Each puts a source first, and has the list of such sources brought up to date. What can't be kept leaves a
    // warning in the log, and nothing else.
    void updateCamera(const std::string& id) const;
    void updateMicrophone(const std::string& id) const;
    void updateDisplay(std::uint32_t id) const;

    /// Puts the sources of a recording first, item by item.
    void updateFromSchema(const ZVSchema& schema) const;
    /// The same later, for callers that can't wait for the disk. Updates happen one after the other, in the order of
    /// these calls.
    void updateInBackground(ZVSchema schema) const;

  private:
    template <class ID>
    std::vector<ID> preferredIDs(std::string_view key) const;
    template <class ID>
    void updatePreferredID(const ID& id, std::string_view key) const;

    const std::shared_ptr<NSUserDefaults> defaults_;
    const std::shared_ptr<Executor> background_;  // a strand
    const Logger logger_;
};

}  // namespace zorvane
