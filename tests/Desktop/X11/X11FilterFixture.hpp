// A stream that shows only some of a private X server's windows.
#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include "tests/Desktop/X11/X11StreamFixture.hpp"
#include "tests/Support/X11TestProgram.hpp"

namespace zorvane {

inline constexpr std::uint32_t grey = 0x404040;

class X11FilterTest : public X11StreamTest {
  protected:
    static constexpr std::int32_t secretProcess = 40001;
    static constexpr std::int32_t plainProcess = 40002;
    using Points = std::vector<ScreenSamples::Point>;

    explicit X11FilterTest(const std::string& withoutExtension = {}) : X11StreamTest("640x480x24", withoutExtension) {
        plain_.setBackground(grey);
    }

    /// All but the windows of the secret program.
    SCContentFilter withoutSecret() {
        SCContentFilter wanted = filter();
        wanted.applications = {{.processID = secretProcess}};
        return wanted;
    }
    /// Only one window of a program, and what the program opens later.
    SCContentFilter cropTo(std::uint32_t window, std::int32_t processID) {
        SCContentFilter wanted = filter();
        wanted.subject =
            SCWindow{.windowID = window, .owningApplication = SCRunningApplication{.processID = processID}};
        return wanted;
    }

    std::shared_ptr<SCStream> startStream(const std::shared_ptr<ScreenSamples>& samples, const SCContentFilter& filter,
                                          const SCStreamConfiguration& configuration = {.showsCursor = false}) {
        auto stream = capture().makeStream(filter, configuration, samples);
        stream->addStreamOutput(samples, SCStreamOutputType::screen, queue_);
        EXPECT_EQ(codeOf(start(*stream)), 0);
        return stream;
    }

    X11TestProgram plain_{plainProcess};
    X11TestProgram secret_{secretProcess};
};

/// How many of the noted pixels, of all pictures so far, have this value.
inline std::size_t countPixels(const ScreenSamples& samples, std::uint32_t value) {
    std::size_t count = 0;
    for (const ScreenSample& sample : samples.all()) {
        count += static_cast<std::size_t>(std::count(sample.pixels.begin(), sample.pixels.end(), value));
    }
    return count;
}

}  // namespace zorvane
