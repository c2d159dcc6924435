#include "MicrophoneChoice.hpp"

#include <algorithm>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "DesktopAnswer.hpp"
#include "Figures.hpp"
#include "UserError.hpp"
#include "Zorvane/Sources/ZVMicrophone.hpp"

namespace zorvane::cli {
namespace {

constexpr const char* noMicrophone =
    "There is no microphone. Plug one in; \"zorvane permissions\" says whether they may be recorded.";

std::string listed(const ZVMicrophone::List& microphones) {
    std::vector<std::string> names;
    for (const auto& microphone : microphones) {
        names.push_back(printable(fmt::format("{} ({})", microphone->id(), microphone->localizedName())));
    }
    return fmt::format("{}", fmt::join(names, ", "));
}

std::string preferredMicrophone() {
    const auto preferred = ZVMicrophone::preferred();
    if (!preferred) {
        throw userError(noMicrophone);
    }
    return preferred->id();
}

std::string knownMicrophone(const std::string& wanted) {
    const ZVMicrophone::List microphones = ZVMicrophone::microphones();
    if (microphones.empty()) {
        throw userError(noMicrophone);
    }
    if (std::ranges::none_of(microphones, [&](const auto& known) { return known->id() == wanted; })) {
        throw userError(fmt::format("There is no microphone \"{}\". Known microphones: {}.", printable(wanted),
                                    listed(microphones)));
    }
    return wanted;
}

}  // namespace

std::string chooseMicrophone(const std::string& wanted, std::stop_token stopToken) {
    const auto choose = [wanted] { return wanted == "default" ? preferredMicrophone() : knownMicrophone(wanted); };
    return awaitDesktop(choose, std::move(stopToken));
}

}  // namespace zorvane::cli
