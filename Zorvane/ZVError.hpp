// The library's own errors, and the texts that any error has for users and for developers.
//
// Errors are thrown values. Where one is kept or passed on it is a `std::exception_ptr`.
#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zorvane {

/// The text about an error that may be shown to the user. A null pointer gives "No error.". Throws nothing of the
/// error's own; safe on any thread, as are all operations of this header.
std::string localizedDescription(const std::exception_ptr& error);

/// The text about an error for logs. Beside a `std::exception` of foreign origin it names the exception's type.
std::string debugDescription(const std::exception_ptr& error);

/// An error that brings both texts with it. Immutable; a copy is cheap and never throws, as with all that derive from
/// it.
class ZVDescribedError : public std::exception {
  public:
    const std::string& localizedDescription() const { return texts_->localized; }
    const std::string& debugDescription() const { return texts_->debug; }
    /// The localized description.
    const char* what() const noexcept override { return texts_->localized.c_str(); }

  protected:
    ZVDescribedError(std::string localizedDescription, std::string debugDescription);

  private:
    struct Texts {
        std::string localized;
        std::string debug;
    };

    std::shared_ptr<const Texts> texts_;
};

/// What the library itself has to say: a text for developers and, if there is one fit for it, a text for the user.
class ZVError : public ZVDescribedError {
  public:
    using UserMessage = std::optional<std::string>;

    /// The caller used the library in a way its state forbids, or a permission is missing.
    static ZVError badOperation(std::string_view message, UserMessage userMessage = std::nullopt);
    /// The schema or a parameter can't be satisfied.
    static ZVError invalidConfiguration(std::string_view message, UserMessage userMessage = std::nullopt);
    /// Something failed that should not fail.
    static ZVError internalError(std::string_view message, UserMessage userMessage = std::nullopt);

    /// Any thrown value as a `ZVError`. A `ZVError` stays what it is. Anything else keeps its debug description, has no
    /// user message, and a group of the form "NSError domain:", domain, " code:", code, from the error underlying it if
    /// there is one, else from itself. An exception without a domain has its type's name and the code 1.
    static ZVError _uncaught(const std::exception_ptr& error);

    ZVError(std::string errorGroup, std::string debugDescription, UserMessage userMessage);

    /// The group's name, ": " and the message. To branch on the group, read what stands before the colon.
    const std::string& errorGroup() const { return details_->errorGroup; }
    const UserMessage& userMessage() const { return details_->userMessage; }

    /// A JSON object with the keys "debugDescription", "errorGroup" and, if there is a user message, "userMessage", on
    /// one line.
    std::string toJSON() const;
    /// Reads that object. Throws a `std::exception` that names the path of what is wrong.
    static ZVError fromJSON(std::string_view json);

  private:
    struct Details {
        std::string errorGroup;
        UserMessage userMessage;
    };

    std::shared_ptr<const Details> details_;
};

/// Several errors in one, in the order in which they arose. The user reads the first one and how many others there are.
class GroupedErrors : public ZVDescribedError {
  public:
    /// None of the pointers is null.
    explicit GroupedErrors(std::vector<std::exception_ptr> errors);

    const std::vector<std::exception_ptr>& errors() const { return *errors_; }

  private:
    std::shared_ptr<const std::vector<std::exception_ptr>> errors_;
};

/// Why a recording ended by itself: the error that started the abort, if any, and those that the clean-up met.
class AbortError : public ZVDescribedError {
  public:
    AbortError(std::exception_ptr initialError, GroupedErrors groupedErrors);

    /// Null if no error started the abort.
    const std::exception_ptr& initialError() const { return initialError_; }
    const GroupedErrors& groupedErrors() const { return groupedErrors_; }

  private:
    std::exception_ptr initialError_;
    GroupedErrors groupedErrors_;
};

}  // namespace zorvane
