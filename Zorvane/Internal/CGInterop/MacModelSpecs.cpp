#include "Zorvane/Internal/CGInterop/MacModelSpecs.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <utility>

#include "Zorvane/Platform/IOKit/IOPlatformExpert.hpp"
#include "Zorvane/Platform/Platform.hpp"

namespace zorvane::MacModelSpecs {
namespace {

enum class DeviceFamily { iMac, macmini, macBookAir, macBookPro, macBook, macPro, macStudio };

// A longer name stands before the one it begins with.
constexpr std::array<std::pair<std::string_view, DeviceFamily>, 6> familyNames{{
    {"iMac", DeviceFamily::iMac},
    {"Macmini", DeviceFamily::macmini},
    {"MacBookAir", DeviceFamily::macBookAir},
    {"MacBookPro", DeviceFamily::macBookPro},
    {"MacBook", DeviceFamily::macBook},
    {"MacPro", DeviceFamily::macPro},
}};

/// Models whose identifier doesn't name a family.
constexpr std::array<std::pair<std::string_view, DeviceFamily>, 25> macModels{{
    {"Mac13,1", DeviceFamily::macStudio},   {"Mac13,2", DeviceFamily::macStudio},
    {"Mac14,2", DeviceFamily::macBookAir},  {"Mac14,3", DeviceFamily::macmini},
    {"Mac14,5", DeviceFamily::macBookPro},  {"Mac14,6", DeviceFamily::macBookPro},
    {"Mac14,7", DeviceFamily::macBookPro},  {"Mac14,8", DeviceFamily::macPro},
    {"Mac14,9", DeviceFamily::macBookPro},  {"Mac14,10", DeviceFamily::macBookPro},
    {"Mac14,12", DeviceFamily::macmini},    {"Mac14,13", DeviceFamily::macStudio},
    {"Mac14,14", DeviceFamily::macStudio},  {"Mac14,15", DeviceFamily::macBookAir},
    {"Mac15,3", DeviceFamily::macBookPro},  {"Mac15,4", DeviceFamily::iMac},
    {"Mac15,5", DeviceFamily::iMac},        {"Mac15,6", DeviceFamily::macBookPro},
    {"Mac15,7", DeviceFamily::macBookPro},  {"Mac15,8", DeviceFamily::macBookPro},
    {"Mac15,9", DeviceFamily::macBookPro},  {"Mac15,10", DeviceFamily::macBookPro},
    {"Mac15,11", DeviceFamily::macBookPro}, {"Mac15,12", DeviceFamily::macBookAir},
    {"Mac15,13", DeviceFamily::macBookAir},
}};

std::string_view nameOf(DeviceFamily family) {
    for (const auto& [name, named] : familyNames) {
        if (named == family) {
            return name;
        }
    }
    return {};
}

std::optional<DeviceFamily> deviceFamily(std::string_view modelID) {
    for (const auto& [name, family] : familyNames) {
        if (modelID.starts_with(name)) {
            return family;
        }
    }
    const auto* const found = std::ranges::find(macModels, modelID, &std::pair<std::string_view, DeviceFamily>::first);
    return found == macModels.end() ? std::nullopt : std::optional(found->second);
}

std::optional<int> wholeNumber(std::string_view digits) {
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool isWhole = error == std::errc() && end == digits.data() + digits.size() && number >= 0;
    return isWhole ? std::optional(number) : std::nullopt;
}

/// The first of the two numbers behind the family's name, if there are two.
std::optional<int> majorNumber(std::string_view modelID, DeviceFamily family) {
    const std::string_view name = nameOf(family);
    const std::size_t comma = modelID.find(',');
    if (!modelID.starts_with(name) || comma == std::string_view::npos || !wholeNumber(modelID.substr(comma + 1))) {
        return std::nullopt;
    }
    return wholeNumber(modelID.substr(name.size(), comma - name.size()));
}

bool isMacBook(DeviceFamily family) {
    return family == DeviceFamily::macBookAir || family == DeviceFamily::macBookPro || family == DeviceFamily::macBook;
}

}  // namespace

std::optional<std::string> getModelIdentifier() {
    return Platform::current()->platformExpert->model();
}

bool isT2MacBook() {
    const auto modelID = getModelIdentifier();
    const auto family = modelID ? deviceFamily(*modelID) : std::nullopt;
    if (family != DeviceFamily::macBookAir && family != DeviceFamily::macBookPro) {
        return false;
    }
    const int firstMajor = family == DeviceFamily::macBookAir ? 8 : 15;
    return majorNumber(*modelID, *family).value_or(0) >= firstMajor;
}

bool isLaptop() {
    const auto modelID = getModelIdentifier();
    const auto family = modelID ? deviceFamily(*modelID) : std::nullopt;
    return (family && isMacBook(*family)) || Platform::current()->platformExpert->hasLid();
}

}  // namespace zorvane::MacModelSpecs
