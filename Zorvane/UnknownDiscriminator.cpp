#include "Zorvane/UnknownDiscriminator.hpp"

#include <fmt/format.h>

#include <utility>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

/// " at path: " and where the value stands, if the error is a decoder's about what it found there.
std::string place(const std::exception_ptr& error) {
    if (!error) {
        return "";
    }
    try {
        std::rethrow_exception(error);
    } catch (const NSError& nsError) {
        const auto& codingPath = nsError.userInfo().codingPath;
        const bool isCorrupt = nsError.domain() == NSCocoaErrorDomain && nsError.code() == NSCoderReadCorruptError;
        return isCorrupt && codingPath ? " at path: " + *codingPath : "";
    } catch (...) {
        return "";
    }
}

std::string describe(const std::exception_ptr& underlyingError, const std::string& field, const std::string& value) {
    return fmt::format("Unknown .{} '{}' decoded{}", field, value, place(underlyingError));
}

}  // namespace

UnknownDiscriminator::UnknownDiscriminator(std::exception_ptr underlyingError, std::string field, std::string value)
    : ZVDescribedError(describe(underlyingError, field, value), describe(underlyingError, field, value)),
      details_(
          std::make_shared<const Details>(Details{std::move(underlyingError), std::move(field), std::move(value)})) {}

}  // namespace zorvane
