// Whole recordings of a private X server's display, as a host makes them.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>

#include "Zorvane/Platform/Platform.hpp"
#include "Zorvane/Zorvane.hpp"
#include "tests/Support/MovieReader.hpp"
#include "tests/Support/PrivateXServer.hpp"
#include "tests/Support/TemporaryDirectory.hpp"
#include "tests/Support/X11TestClient.hpp"

namespace zorvane::testing {

class DisplayRecordingTest : public ::testing::Test {
  protected:
    explicit DisplayRecordingTest(const std::string& screen = "640x480x24") : server_(screen) {
        Platform::install(Platform());
    }
    ~DisplayRecordingTest() override { Platform::install(Platform()); }

    ZVRecorder makeRecorder(const std::string& name, ZVRecorder::OnAbort onAbort = nullptr) const {
        const auto display = ZVRecorder::SchemaItem::display(ZVDisplay::displays().at(0)->id(), {.showsCursor = false});
        return ZVRecorder({display}, directory_.path() / name, std::nullopt, std::move(onAbort));
    }

    static void begin(ZVRecorder& recorder) {
        recorder.prepare().get();
        recorder.start().get();
    }

    /// Lets a recording go on for so long.
    static void pass(double seconds) { std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); }

    static double lengthOf(const ZVRecorder& recorder) {
        const auto statistics = recorder.statistics();
        return statistics.recordUntil - statistics.recordFrom;
    }

    static std::filesystem::path movieOf(const ZVRecorder::Result& result) {
        EXPECT_EQ(result.bundleInfo.files.size(), 1U);
        return result.bundleURL / result.bundleInfo.files.at(0).filename;
    }

    static Movie pictures(const std::filesystem::path& path) { return readMovie(path, MovieDetail::pictures); }

    PrivateXServer server_;
    X11TestClient client_;
    TemporaryDirectory directory_;
};

}  // namespace zorvane::testing
