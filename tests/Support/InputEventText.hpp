// The elements of a side file of input as lines of text, to compare.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Zorvane/ZVInputEvent.hpp"

namespace zorvane::testing {

/// "0.500 down primary iBeam 0.5,0.25 shift", "0.500 down A \"a\"", "0.500 modifiers shift control": seconds, what
/// happened, and what is held. A button, text or modifier that is absent is left out.
std::string textOf(const ZVInputEvent& event);
std::vector<std::string> textOfFile(const std::filesystem::path& sideFile);

}  // namespace zorvane::testing
