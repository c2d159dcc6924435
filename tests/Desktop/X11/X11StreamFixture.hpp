// A stream of a private X server's screen, and what it takes to try one.
#pragma once

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/DispatchQueue.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Linux/LinuxPlatform.hpp"
#include "Zorvane/Platform/ScreenCaptureKit/SCScreenCapture.hpp"
#include "tests/Support/PrivateXServer.hpp"
#include "tests/Support/ScreenSamples.hpp"
#include "tests/Support/X11TestClient.hpp"

namespace zorvane {

inline SCShareableContent contentOf(SCScreenCapture& capture,
                                    SCShareableContentScope scope = SCShareableContentScope::all) {
    std::promise<SCShareableContent> promise;
    capture.getShareableContent(scope, [&](SCShareableContent content, std::exception_ptr error) {
        error ? promise.set_exception(std::move(error)) : promise.set_value(std::move(content));
    });
    return promise.get_future().get();
}

/// The error that the completion was given.
inline std::exception_ptr start(SCStream& stream) {
    std::promise<std::exception_ptr> promise;
    stream.startCapture([&](std::exception_ptr error) { promise.set_value(std::move(error)); });
    return promise.get_future().get();
}

inline std::exception_ptr stop(SCStream& stream) {
    std::promise<std::exception_ptr> promise;
    stream.stopCapture([&](std::exception_ptr error) { promise.set_value(std::move(error)); });
    return promise.get_future().get();
}

/// The stream error's code, or 0 for none.
inline int codeOf(const std::exception_ptr& error) {
    if (!error) {
        return 0;
    }
    try {
        std::rethrow_exception(error);
    } catch (const NSError& nsError) {
        EXPECT_EQ(nsError.domain(), SCStreamErrorDomain) << nsError.debugDescription();
        return static_cast<int>(nsError.code());
    }
}

inline constexpr std::uint32_t red = 0xE01020;
inline constexpr std::uint32_t green = 0x10E020;
inline constexpr std::uint32_t blue = 0x1020E0;
inline constexpr std::uint32_t white = 0xFFFFFF;

class X11StreamTest : public testing::Test {
  protected:
    explicit X11StreamTest(const std::string& screen = "640x480x24", const std::string& withoutExtension = {})
        : server_(screen, withoutExtension) {}

    SCContentFilter filter() { return {.display = contentOf(capture()).displays.at(0)}; }
    SCScreenCapture& capture() { return *platform_.screenCapture; }

    std::shared_ptr<SCStream> makeStream(const std::shared_ptr<ScreenSamples>& samples,
                                         const SCStreamConfiguration& configuration = {.showsCursor = false}) {
        auto stream = capture().makeStream(filter(), configuration, samples);
        stream->addStreamOutput(samples, SCStreamOutputType::screen, queue_);
        return stream;
    }

    PrivateXServer server_;
    Platform platform_ = makeLinuxPlatform();
    X11TestClient client_;
    DispatchQueue queue_ = DispatchQueue::serial("X11StreamTest");
};

}  // namespace zorvane
