#include "Zorvane/ZVError.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <type_traits>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/ZVRecorder.hpp"

namespace zorvane {
namespace {

template <typename Error>
std::exception_ptr pointer(Error error) {
    return std::make_exception_ptr(std::move(error));
}

template <typename... Errors>
inline constexpr bool copiesWithoutThrowing = (std::is_nothrow_copy_constructible_v<Errors> && ...);

// Else catching one by value, or copying it into a result, could end the process.
static_assert(copiesWithoutThrowing<ZVError, GroupedErrors, AbortError, ZVRecorder::PartialResultError, NSError>);

TEST(ZVError, PutsTheGroupInFrontOfTheMessage) {
    const auto error = ZVError::badOperation("Called stop while recorder wasn't prepared yet.");
    EXPECT_EQ(error.errorGroup(), "badOperation: Called stop while recorder wasn't prepared yet.");
    EXPECT_EQ(error.debugDescription(), "Called stop while recorder wasn't prepared yet.");
    EXPECT_EQ(ZVError::invalidConfiguration("a").errorGroup(), "invalidConfiguration: a");
    EXPECT_EQ(ZVError::internalError("a").errorGroup(), "internalError: a");
}

TEST(ZVError, ShowsTheUserMessageElseTheDeveloperMessageAsUnexpected) {
    EXPECT_EQ(localizedDescription(pointer(ZVError::internalError("Queue lost.", "Try again."))), "Try again.");
    EXPECT_EQ(localizedDescription(pointer(ZVError::internalError("Queue lost."))), "Unexpected error.\nQueue lost.");
    EXPECT_STREQ(ZVError::internalError("Queue lost.").what(), "Unexpected error.\nQueue lost.");
}

TEST(ZVError, HasAJSONFormWithoutAbsentMessages) {
    const auto silent = ZVError::internalError("a/b");
    EXPECT_EQ(silent.toJSON(), R"({"debugDescription":"a\/b","errorGroup":"internalError: a\/b"})");
    EXPECT_EQ(ZVError::fromJSON(silent.toJSON()).userMessage(), std::nullopt);

    const auto telling = ZVError::fromJSON(ZVError::internalError("a", "Read \"me\".").toJSON());
    EXPECT_EQ(telling.userMessage(), "Read \"me\".");
    EXPECT_EQ(telling.errorGroup(), "internalError: a");
    EXPECT_THROW(ZVError::fromJSON(R"({"errorGroup":"x"})"), std::exception);
}

TEST(ZVError, KeepsAZVErrorWhenTakenAsUncaught) {
    const auto error = ZVError::_uncaught(pointer(ZVError::internalError("a", "Read me.")));
    EXPECT_EQ(error.errorGroup(), "internalError: a");
    EXPECT_EQ(error.userMessage(), "Read me.");
}

TEST(ZVError, NamesDomainAndCodeOfAnUncaughtError) {
    const NSError cause("CauseDomain", -3817);
    const NSError outer("OuterDomain", 5, {"Outer text.", pointer(cause), {}});
    EXPECT_EQ(ZVError::_uncaught(pointer(cause)).errorGroup(), "NSError domain:CauseDomain code:-3817");

    const auto error = ZVError::_uncaught(pointer(outer));
    EXPECT_EQ(error.errorGroup(), "NSError domain:CauseDomain code:-3817") << "the underlying error counts";
    EXPECT_EQ(error.debugDescription(), outer.debugDescription()) << "but the error itself is described";
    EXPECT_EQ(error.userMessage(), std::nullopt);
}

TEST(ZVError, GivesForeignExceptionsADomain) {
    const std::filesystem::filesystem_error missing("open", std::make_error_code(std::errc::no_such_file_or_directory));
    EXPECT_EQ(ZVError::_uncaught(pointer(missing)).errorGroup(), "NSError domain:NSPOSIXErrorDomain code:2");
    EXPECT_EQ(ZVError::_uncaught(pointer(std::runtime_error("x"))).errorGroup(),
              "NSError domain:std::runtime_error code:1");
    EXPECT_EQ(ZVError::_uncaught(pointer(42)).errorGroup(), "NSError domain:int code:1");
}

TEST(ErrorTexts, ExistForAnythingThatCanBeThrown) {
    EXPECT_EQ(localizedDescription(pointer(NSError("D", 1, {"Text.", nullptr, {}}))), "Text.");
    EXPECT_EQ(debugDescription(pointer(NSError("D", 1, {"Text.", nullptr, {}}))), "Error Domain=D Code=1 \"Text.\"");
    EXPECT_EQ(localizedDescription(pointer(std::runtime_error("x"))), "x");
    EXPECT_EQ(debugDescription(pointer(std::runtime_error("x"))), "std::runtime_error: x");
    EXPECT_EQ(localizedDescription(pointer(42)), "Unexpected error.");
    EXPECT_EQ(debugDescription(pointer(42)), "int");
    EXPECT_EQ(localizedDescription(nullptr), "No error.");
    EXPECT_EQ(debugDescription(nullptr), "No error.");
}

TEST(GroupedErrors, CountsTheOthersBehindTheFirst) {
    const auto error = [](const char* text) { return pointer(ZVError::internalError("debug", text)); };
    EXPECT_EQ(GroupedErrors({}).localizedDescription(), "No error.");
    EXPECT_EQ(GroupedErrors({error("One.")}).localizedDescription(), "One.");
    EXPECT_EQ(GroupedErrors({error("One."), error("Two."), error("Three.")}).localizedDescription(),
              "One. and 2 other errors.");
}

TEST(GroupedErrors, ListsEveryErrorForDevelopers) {
    EXPECT_EQ(GroupedErrors({}).debugDescription(), "0 errors:");
    const GroupedErrors inner({pointer(ZVError::internalError("deep"))});
    const GroupedErrors errors({pointer(ZVError::internalError("a")), pointer(inner)});
    EXPECT_EQ(errors.debugDescription(), "2 errors:\n  a\n  1 errors:\n  deep");
}

TEST(AbortError, StartsWithTheErrorThatBeganIt) {
    const GroupedErrors two({pointer(ZVError::internalError("a", "A.")), pointer(ZVError::internalError("b"))});
    const auto initial = pointer(ZVError::internalError("x", "X."));
    EXPECT_EQ(AbortError(initial, two).localizedDescription(), "X. and 2 other errors.");
    EXPECT_EQ(AbortError(initial, GroupedErrors({})).localizedDescription(), "X. and 0 other errors.");
    EXPECT_EQ(AbortError(nullptr, two).localizedDescription(), two.localizedDescription());
}

}  // namespace
}  // namespace zorvane
