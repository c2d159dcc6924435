#include "Zorvane/ZVBundleInfo.hpp"

#include "FuzzTarget.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using zorvane::ZVBundleInfo;
    const auto text = zorvane::fuzz::asText(data, size);
    if (const auto info = zorvane::fuzz::attempt([text] { return ZVBundleInfo::decode(text); })) {
        zorvane::fuzz::require(ZVBundleInfo::decode(info->encode()) == *info, "what is written reads back");
    }
    return 0;
}
