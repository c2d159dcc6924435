#include "Zorvane/Platform/Foundation/NSError.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

namespace zorvane {
namespace {

TEST(NSError, SaysWhatFailedOnWhichPathAndWhy) {
    const auto error = NSError::posix(ENOSPC, "write", "/tmp/a.mov");
    EXPECT_EQ(error.domain(), "NSPOSIXErrorDomain");
    EXPECT_EQ(error.code(), ENOSPC);
    EXPECT_STREQ(error.what(), "Unable to write \"/tmp/a.mov\": No space left on device.");
    EXPECT_EQ(NSError::posix(EAGAIN, "read random bytes").localizedDescription(),
              "Unable to read random bytes: Resource temporarily unavailable.");
}

TEST(NSError, MakesATextOfDomainAndCodeWhenItHasNone) {
    EXPECT_STREQ(NSError("SCStreamErrorDomain", -3817).what(),
                 "The operation couldn't be completed. (SCStreamErrorDomain error -3817.)");
}

TEST(NSError, KeepsAnUnderlyingErrorAliveInItsCopies) {
    auto copy = [] {
        const NSError cause("Cause", 1);
        return NSError("Outer", 2, {"Text.", std::make_exception_ptr(cause), {}});
    }();
    ASSERT_NE(copy.underlyingError(), nullptr);
    EXPECT_EQ(copy.underlyingError()->domain(), "Cause");
    EXPECT_NE(copy.debugDescription().find("Domain=Cause"), std::string::npos);
}

TEST(NSError, HasNoUnderlyingErrorWhereTheCauseIsAnotherException) {
    const NSError error("Outer", 2, {"", std::make_exception_ptr(std::runtime_error("x")), {}});
    EXPECT_EQ(error.underlyingError(), nullptr);
    EXPECT_TRUE(error.userInfo().underlyingError);
}

}  // namespace
}  // namespace zorvane
