// A conductor over scripted recorders, and everything it tells the outside.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Zorvane/Internal/Concurrency/Activity.hpp"
#include "Zorvane/Internal/Concurrency/TaskHandle.hpp"
#include "Zorvane/Internal/Conductor.hpp"
#include "Zorvane/Internal/SchemaItem.hpp"
#include "Zorvane/ZVRecorder.hpp"
#include "tests/Support/LogCapture.hpp"
#include "tests/Support/ScriptedRecorder.hpp"
#include "tests/Support/TemporaryDirectory.hpp"

namespace zorvane {

/// An item that gives these recorders and hands each the abort handler.
ZVSchemaItem customItem(std::vector<std::shared_ptr<ScriptedRecorder>> recorders);

/// How an operation ended: "returned", or the error's debug description.
template <class T>
std::string describe(const ZVOutcome<T>& outcome) {
    return outcome.isSuccess() ? "returned" : debugDescription(outcome.error());
}

class ConductorBench {
  public:
    using Result = ZVRecorder::Result;
    using PartialResultError = ZVRecorder::PartialResultError;

    /// Records with `count` scripted recorders, in one item each, to a directory that doesn't exist yet.
    explicit ConductorBench(int count = 1);
    /// Records these items.
    explicit ConductorBench(std::vector<ZVSchemaItem> items);

    /// States as a test brings them about. The two that lie between a signal and the stop it causes never last.
    enum class Reached {
        initial,
        preparing,
        prepared,
        prepareFailed,
        recording,
        stopping,
        stopped,
        stopFailed,
        abortedByUser,
        interrupted,
        abortFailed,
    };
    /// Drives a new conductor to a state.
    void reach(Reached state);
    /// Lets go of the recorders that hold up `preparing` or `stopping`, and waits until all is quiet.
    void letGo();

    // Each runs to its end. Trace ids are "P", "S", "X".
    ZVOutcome<> prepare();
    ZVOutcome<> start();
    ZVOutcome<Result> stop();

    /// Has a recorder signal, and waits until all is quiet.
    void signal(const AbortSignal& signal, std::size_t recorder = 0);

    ScriptedRecorder& recorder(std::size_t index = 0) { return *recorders[index]; }
    std::filesystem::path manifest() const { return bundleURL / "zorvane.json"; }
    /// "level message" for every line logged so far.
    std::vector<std::string> lines() const;

    LogCapture log;
    TemporaryDirectory directory;
    std::filesystem::path bundleURL = directory.path() / "bundle";
    std::vector<std::shared_ptr<ScriptedRecorder>> recorders;
    /// What the abort handler was called with.
    std::shared_ptr<std::vector<ZVRecorder::AbortReason>> aborts =
        std::make_shared<std::vector<ZVRecorder::AbortReason>>();
    std::shared_ptr<Conductor> conductor;

  private:
    void makeConductor(std::vector<ZVSchemaItem> items);
};

/// Runs a task to its end.
template <class T>
ZVOutcome<T> outcomeOf(Task<T> task) {
    try {
        if constexpr (std::is_void_v<T>) {
            std::move(task).get();
            return ZVOutcome<>::success();
        } else {
            return ZVOutcome<T>::success(std::move(task).get());
        }
    } catch (...) {
        return ZVOutcome<T>::failure(std::current_exception());
    }
}

/// What a stop threw. Fails the test if it threw nothing or something else.
ZVRecorder::PartialResultError partialResultError(const ZVOutcome<ZVRecorder::Result>& outcome);

inline std::exception_ptr failure(const std::string& text) {
    return std::make_exception_ptr(ZVError::internalError(text));
}

}  // namespace zorvane
