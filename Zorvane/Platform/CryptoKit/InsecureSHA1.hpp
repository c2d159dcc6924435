// SHA-1, to tell things apart by what they hold; no protection against forgery.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace zorvane {

using SHA1Digest = std::array<std::uint8_t, 20>;

/// Any thread.
SHA1Digest insecureSHA1(std::string_view bytes);

}  // namespace zorvane
