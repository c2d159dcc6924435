#include "Zorvane/Platform/Foundation/NSException.hpp"

#include <execinfo.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <utility>

namespace zorvane {
namespace {

std::vector<std::string> currentCallStackSymbols() {
    std::array<void*, 64> frames;
    const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
    const std::unique_ptr<char*, decltype(&std::free)> symbols(backtrace_symbols(frames.data(), count), &std::free);
    if (!symbols) {
        return {};
    }
    return {symbols.get(), symbols.get() + count};
}

}  // namespace

NSException::NSException(std::string name, std::string reason)
    : name_(std::move(name)), reason_(std::move(reason)), callStackSymbols_(currentCallStackSymbols()) {}

}  // namespace zorvane
