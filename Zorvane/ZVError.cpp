#include "Zorvane/ZVError.hpp"

#include <cxxabi.h>
#include <fmt/format.h>

#include <system_error>
#include <typeinfo>
#include <utility>

#include "Zorvane/Internal/JSONReader.hpp"
#include "Zorvane/Internal/JSONWriter.hpp"
#include "Zorvane/Internal/TypeName.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {
namespace {

/// The type of the exception that the surrounding catch clause holds.
std::string currentExceptionType() {
    const std::type_info* type = abi::__cxa_current_exception_type();
    return type != nullptr ? qualifiedTypeName(*type) : "unknown exception";
}

std::string errorGroup(std::string_view domain, std::int64_t code) {
    return fmt::format("NSError domain:{} code:{}", domain, code);
}

std::string platformErrorGroup(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const NSError& nsError) {
        const NSError& cause = nsError.underlyingError() != nullptr ? *nsError.underlyingError() : nsError;
        return errorGroup(cause.domain(), cause.code());
    } catch (const std::system_error& systemError) {
        const std::error_code& code = systemError.code();
        const bool isPOSIX = code.category() == std::generic_category() || code.category() == std::system_category();
        return errorGroup(isPOSIX ? NSPOSIXErrorDomain : code.category().name(), code.value());
    } catch (...) {
        return errorGroup(currentExceptionType(), 1);
    }
}

std::string groupedLocalizedDescription(const std::vector<std::exception_ptr>& errors) {
    if (errors.empty()) {
        return "No error.";
    }
    const std::string first = localizedDescription(errors.front());
    return errors.size() == 1 ? first : fmt::format("{} and {} other errors.", first, errors.size() - 1);
}

std::string groupedDebugDescription(const std::vector<std::exception_ptr>& errors) {
    std::string text = fmt::format("{} errors:", errors.size());
    for (const std::exception_ptr& error : errors) {
        text += "\n  " + debugDescription(error);
    }
    return text;
}

std::string abortLocalizedDescription(const std::exception_ptr& initialError, const GroupedErrors& groupedErrors) {
    if (!initialError) {
        return groupedErrors.localizedDescription();
    }
    return fmt::format("{} and {} other errors.", localizedDescription(initialError), groupedErrors.errors().size());
}

std::string abortDebugDescription(const std::exception_ptr& initialError, const GroupedErrors& groupedErrors) {
    if (!initialError) {
        return groupedErrors.debugDescription();
    }
    return fmt::format("{}, then {}", debugDescription(initialError), groupedErrors.debugDescription());
}

}  // namespace

std::string localizedDescription(const std::exception_ptr& error) {
    if (!error) {
        return "No error.";
    }
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& exception) {
        // The errors of this library and of its platform layer give their localized description here.
        return exception.what();
    } catch (...) {
        return "Unexpected error.";
    }
}

std::string debugDescription(const std::exception_ptr& error) {
    if (!error) {
        return "No error.";
    }
    try {
        std::rethrow_exception(error);
    } catch (const ZVDescribedError& described) {
        return described.debugDescription();
    } catch (const NSError& nsError) {
        return nsError.debugDescription();
    } catch (const std::exception& exception) {
        return fmt::format("{}: {}", currentExceptionType(), exception.what());
    } catch (...) {
        return currentExceptionType();
    }
}

ZVDescribedError::ZVDescribedError(std::string localizedDescription, std::string debugDescription)
    : texts_(std::make_shared<const Texts>(Texts{std::move(localizedDescription), std::move(debugDescription)})) {}

ZVError::ZVError(std::string errorGroup, std::string debugDescription, UserMessage userMessage)
    : ZVDescribedError(userMessage ? *userMessage : "Unexpected error.\n" + debugDescription, debugDescription),
      details_(std::make_shared<const Details>(Details{std::move(errorGroup), std::move(userMessage)})) {}

ZVError ZVError::badOperation(std::string_view message, UserMessage userMessage) {
    return {fmt::format("badOperation: {}", message), std::string(message), std::move(userMessage)};
}

ZVError ZVError::invalidConfiguration(std::string_view message, UserMessage userMessage) {
    return {fmt::format("invalidConfiguration: {}", message), std::string(message), std::move(userMessage)};
}

ZVError ZVError::internalError(std::string_view message, UserMessage userMessage) {
    return {fmt::format("internalError: {}", message), std::string(message), std::move(userMessage)};
}

ZVError ZVError::_uncaught(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const ZVError& zvError) {
        return zvError;
    } catch (...) {
        return {platformErrorGroup(error), zorvane::debugDescription(error), std::nullopt};
    }
}

std::string ZVError::toJSON() const {
    std::string json;
    JSONWriter writer(json);
    writer.beginObject();
    writer.key("debugDescription");
    writer.string(debugDescription());
    writer.key("errorGroup");
    writer.string(errorGroup());
    if (userMessage()) {
        writer.key("userMessage");
        writer.string(*userMessage());
    }
    writer.endObject();
    return json;
}

ZVError ZVError::fromJSON(std::string_view json) {
    const JSONDocument document(json);
    const JSONReader root = document.root();
    UserMessage userMessage;
    if (const auto text = root.optionalMember("userMessage")) {
        userMessage = text->string();
    }
    return {root.member("errorGroup").string(), root.member("debugDescription").string(), std::move(userMessage)};
}

GroupedErrors::GroupedErrors(std::vector<std::exception_ptr> errors)
    : ZVDescribedError(groupedLocalizedDescription(errors), groupedDebugDescription(errors)),
      errors_(std::make_shared<const std::vector<std::exception_ptr>>(std::move(errors))) {}

AbortError::AbortError(std::exception_ptr initialError, GroupedErrors groupedErrors)
    : ZVDescribedError(abortLocalizedDescription(initialError, groupedErrors),
                       abortDebugDescription(initialError, groupedErrors)),
      initialError_(std::move(initialError)),
      groupedErrors_(std::move(groupedErrors)) {}

}  // namespace zorvane
