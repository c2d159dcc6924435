// What machine this is, from what the firmware tells the kernel.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "Zorvane/Platform/IOKit/IOPlatformExpert.hpp"

namespace zorvane {

/// Reads the files anew for each question; takes microseconds. `root` stands in the place of "/".
class MachineModel final : public IOPlatformExpert {
  public:
    explicit MachineModel(std::filesystem::path root = "/") : root_(std::move(root)) {}

    /// The product's name, such as "MacBookPro15,1" or "20XWCTO1WW".
    std::optional<std::string> model() override;

    /// By the kind of chassis, or by the switch that the firmware has for a lid.
    bool hasLid() override;

  private:
    std::optional<std::string> firstLine(const char* path) const;

    const std::filesystem::path root_;
};

}  // namespace zorvane
