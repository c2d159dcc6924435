#include "Zorvane/Platform/Foundation/NSError.hpp"

#include <fmt/format.h>

#include <system_error>

namespace zorvane {
namespace {

std::unique_ptr<const NSError> asNSError(const std::exception_ptr& error) {
    if (!error) {
        return nullptr;
    }
    try {
        std::rethrow_exception(error);
    } catch (const NSError& nsError) {
        return std::make_unique<const NSError>(nsError);
    } catch (...) {
        return nullptr;
    }
}

NSError posixError(int errorNumber, std::string_view failure) {
    const std::string reason = std::generic_category().message(errorNumber);
    return {NSPOSIXErrorDomain, errorNumber, {fmt::format("Unable to {}: {}.", failure, reason), nullptr, {}}};
}

}  // namespace

NSError::NSError(std::string_view domain, std::int64_t code, UserInfo userInfo) {
    if (userInfo.localizedDescription.empty()) {
        userInfo.localizedDescription =
            fmt::format("The operation couldn't be completed. ({} error {}.)", domain, code);
    }
    auto debugDescription = fmt::format("Error Domain={} Code={} \"{}\"", domain, code, userInfo.localizedDescription);
    auto underlying = asNSError(userInfo.underlyingError);
    if (underlying) {
        debugDescription += fmt::format(" (underlying: {})", underlying->debugDescription());
    }
    details_ = std::make_shared<const Details>(
        Details{std::string(domain), code, std::move(userInfo), std::move(debugDescription), std::move(underlying)});
}

NSError NSError::posix(int errorNumber, std::string_view action, std::string_view path) {
    return posixError(errorNumber, fmt::format("{} \"{}\"", action, path));
}

NSError NSError::posix(int errorNumber, std::string_view action) {
    return posixError(errorNumber, action);
}

NSError NSError::cocoa(std::int64_t code, std::string localizedDescription) {
    return {NSCocoaErrorDomain, code, {std::move(localizedDescription), nullptr, {}}};
}

}  // namespace zorvane
