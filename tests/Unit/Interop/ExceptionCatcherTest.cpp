#include "Zorvane/Interop/ExceptionCatcher.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

namespace zorvane {
namespace {

TEST(ExceptionCatcher, TurnsAPlatformExceptionIntoAnError) {
    try {
        ExceptionCatcher::catching(
            [] { throw NSException("NSInternalInconsistencyException", "Append before start."); });
        FAIL() << "nothing thrown";
    } catch (const NSError& error) {
        EXPECT_EQ(error.domain(), "NSInternalInconsistencyException");
        EXPECT_EQ(error.code(), 0);
        EXPECT_EQ(error.localizedDescription(), "Append before start.");
        EXPECT_FALSE(error.userInfo().callStackSymbols.empty());
        EXPECT_THROW(std::rethrow_exception(error.userInfo().underlyingError), NSException);
        EXPECT_EQ(error.underlyingError(), nullptr) << "the exception is no error";
    }
}

TEST(ExceptionCatcher, PassesResultsAndOtherExceptions) {
    int value = 5;
    EXPECT_EQ(&ExceptionCatcher::catching([&]() -> int& { return value; }), &value);
    EXPECT_THROW(ExceptionCatcher::catching([] { throw std::runtime_error("x"); }), std::runtime_error);
}

}  // namespace
}  // namespace zorvane
