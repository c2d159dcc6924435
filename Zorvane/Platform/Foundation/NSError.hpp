// The platform's error value: a domain, a code in it, and texts.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zorvane {

inline constexpr std::string_view NSPOSIXErrorDomain = "NSPOSIXErrorDomain";
inline constexpr std::string_view NSCocoaErrorDomain = "NSCocoaErrorDomain";

/// Codes of `NSCocoaErrorDomain`.
inline constexpr std::int64_t NSCoderReadCorruptError = 4864;
inline constexpr std::int64_t NSCoderValueNotFoundError = 4865;
inline constexpr std::int64_t NSCoderInvalidValueError = 4866;

/// An error that the platform reports. Immutable; a copy is cheap and never throws.
class NSError : public std::exception {
  public:
    /// What an error may know beyond its domain and code.
    struct UserInfo {
        /// For the user. Empty stands for a text made of domain and code.
        std::string localizedDescription;
        /// What caused this error: any exception, or null.
        std::exception_ptr underlyingError;
        /// Where a caught `NSException` was thrown, innermost first.
        std::vector<std::string> callStackSymbols;
        /// Where in a document stands what couldn't be read: ".key" for each key and "[number]" for each element on the
        /// way there.
        std::optional<std::string> codingPath;
    };

    NSError(std::string_view domain, std::int64_t code, UserInfo userInfo);
    NSError(std::string_view domain, std::int64_t code) : NSError(domain, code, UserInfo{}) {}

    /// An error number of the operating system; call it before anything else touches `errno`. The text says what
    /// failed, on which path, and why: `Unable to create "/a/b": No such file or directory.` for the action "create".
    static NSError posix(int errorNumber, std::string_view action, std::string_view path);
    /// The same where there is no path: `Unable to read random bytes: ...`.
    static NSError posix(int errorNumber, std::string_view action);
    static NSError cocoa(std::int64_t code, std::string localizedDescription);

    const std::string& domain() const { return details_->domain; }
    std::int64_t code() const { return details_->code; }
    const UserInfo& userInfo() const { return details_->userInfo; }
    const std::string& localizedDescription() const { return details_->userInfo.localizedDescription; }
    /// For developers: domain, code and localized description on one line.
    const std::string& debugDescription() const { return details_->debugDescription; }
    /// The underlying error if that is an `NSError` too. Lives as long as this error or a copy of it.
    const NSError* underlyingError() const { return details_->underlyingNSError.get(); }

    /// The localized description.
    const char* what() const noexcept override { return localizedDescription().c_str(); }

  private:
    struct Details {
        std::string domain;
        std::int64_t code;
        UserInfo userInfo;
        std::string debugDescription;
        std::unique_ptr<const NSError> underlyingNSError;
    };

    std::shared_ptr<const Details> details_;
};

}  // namespace zorvane
