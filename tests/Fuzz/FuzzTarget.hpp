// What every fuzz target has: the entry that a fuzzer calls, and what it may find.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace zorvane::fuzz {

inline std::string_view asText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Ends the process if what a target claims about an input isn't so.
inline void require(bool condition, const char* claim) {
    if (!condition) {
        std::fprintf(stderr, "not so: %s\n", claim);
        std::abort();
    }
}

/// What `read` returns, or nothing if it throws, which it may for any input.
template <class Read>
auto attempt(Read&& read) -> std::optional<decltype(read())> {
    try {
        return read();
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

/// Reads the text as a union of records. If it is one, it can be written, and what is written reads back the same.
template <class Union>
void readAndWrite(std::string_view text) {
    if (const auto value = attempt([text] { return Union::fromJSON(text); })) {
        require(Union::fromJSON(value->toJSON()).payload() == value->payload(), "what is written reads back");
    }
}

}  // namespace zorvane::fuzz
