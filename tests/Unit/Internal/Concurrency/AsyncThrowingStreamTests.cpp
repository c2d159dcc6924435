#include "Zorvane/Internal/Concurrency/AsyncThrowingStream.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

namespace zorvane {
namespace {

TEST(AsyncThrowingStream, EndsWithItsErrorBehindTheValuesBefore) {
    auto [stream, source] = AsyncThrowingStream<int>::make(StreamBuffering::unbounded());
    source.yield(1);
    source.yield(2);
    source.finish(std::make_exception_ptr(std::runtime_error("gone")));
    source.yield(3);
    EXPECT_EQ(stream.next().get(), 1);
    EXPECT_EQ(stream.next().get(), 2);
    EXPECT_THROW(stream.next().get(), std::runtime_error);
    EXPECT_EQ(stream.next().get(), std::nullopt);
}

TEST(AsyncThrowingStream, EndsWithoutAnErrorWhenItIsFinishedSo) {
    auto [stream, source] = AsyncThrowingStream<int>::make(StreamBuffering::unbounded());
    source.yield(1);
    source.finish();
    source.finish(std::make_exception_ptr(std::runtime_error("too late")));
    EXPECT_EQ(stream.next().get(), 1);
    EXPECT_EQ(stream.next().get(), std::nullopt);
}

}  // namespace
}  // namespace zorvane
