// A scripted desktop for tests of device discoveries.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/AsyncStream.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/VirtualWorld.hpp"

namespace zorvane::testing {

class DeviceWorldTest : public VirtualWorldTest {
  protected:
    /// The script's events happen, and everything they set off.
    template <class Script>
    void happen(Script script) {
        script(desktop->now());
        Activity::waitUntilIdle();
    }

    template <class List>
    static std::vector<std::string> ids(const List& list) {
        std::vector<std::string> ids;
        for (const auto& device : list) {
            ids.push_back(device->id());
        }
        return ids;
    }

    /// What a stream holds that will get nothing more for now.
    template <class T>
    std::vector<T> taken(AsyncStream<T>& stream, std::size_t count) {
        std::vector<T> values;
        for (std::size_t index = 0; index < count; ++index) {
            values.push_back(*stream.next().get());
        }
        return values;
    }

    LogCapture log{ZVLogger::shared()};
};

}  // namespace zorvane::testing
