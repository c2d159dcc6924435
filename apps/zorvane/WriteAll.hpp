// Writing to a descriptor, whole.
#pragma once

#include <string_view>

namespace zorvane::cli {

/// Blocks until all of `text` is written. Throws `std::system_error`.
void writeAll(int descriptor, std::string_view text);

/// Prints a program's result on standard output. Throws `std::runtime_error` with a text for the user.
void printResult(std::string_view text);

/// Occupies standard descriptors that the caller has closed, so that no file of a recording gets their numbers. Writing
/// to them fails as before.
void occupyStandardDescriptors();

}  // namespace zorvane::cli
