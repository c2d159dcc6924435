#include "tests/Support/ConductorBench.hpp"

#include <stdexcept>
#include <utility>

namespace zorvane {

ZVSchemaItem customItem(std::vector<std::shared_ptr<ScriptedRecorder>> recorders) {
    auto make = [recorders = std::move(recorders)](const std::filesystem::path&, const Logger&,
                                                   const AbortHandler& onAbort) {
        for (const auto& recorder : recorders) {
            recorder->signal = onAbort;
        }
        return Recorders(recorders.begin(), recorders.end());
    };
    return ZVSchemaItem(InteralSchemaItem(CustomSchemaItem{std::move(make)}));
}

ConductorBench::ConductorBench(int count) {
    std::vector<ZVSchemaItem> items;
    for (int index = 0; index < count; ++index) {
        recorders.push_back(std::make_shared<ScriptedRecorder>("recorder" + std::to_string(index)));
        items.push_back(customItem({recorders.back()}));
    }
    makeConductor(std::move(items));
}

ConductorBench::ConductorBench(std::vector<ZVSchemaItem> items) {
    makeConductor(std::move(items));
}

void ConductorBench::makeConductor(std::vector<ZVSchemaItem> items) {
    auto onAbort = [heard = aborts](const ZVRecorder::AbortReason& reason) { heard->push_back(reason); };
    conductor = Conductor::make("Ab3dE", ZVSchema{bundleURL, std::move(items)}, log.logger<ConductorBench>(),
                                std::move(onAbort));
}

void ConductorBench::reach(Reached state) {
    if (state == Reached::initial) {
        return;
    }
    if (state == Reached::preparing) {
        recorder().preparing.hold();
        spawn(conductor->prepare("background"));
        Activity::waitUntilIdle();
        return;
    }
    if (state == Reached::prepareFailed) {
        recorder().preparing.failWith(failure("no source"));
        prepare();
        return;
    }
    prepare();
    if (state == Reached::prepared) {
        return;
    }
    start();
    switch (state) {
        case Reached::stopping:
            recorder().finishing.hold();
            spawn(conductor->stop("background"));
            Activity::waitUntilIdle();
            break;
        case Reached::stopFailed:
            recorder().finishing.failWith(failure("no end"));
            stop();
            break;
        case Reached::stopped:
            stop();
            break;
        case Reached::abortedByUser:
            signal(AbortSignal::userStopped());
            break;
        case Reached::interrupted:
            signal(AbortSignal::interrupted(failure("source lost")));
            break;
        case Reached::abortFailed:
            recorder().finishing.failWith(failure("no end"));
            signal(AbortSignal::userStopped());
            break;
        default:
            break;
    }
}

void ConductorBench::letGo() {
    recorder().preparing.release();
    recorder().finishing.release();
    Activity::waitUntilIdle();
}

ZVOutcome<> ConductorBench::prepare() {
    return outcomeOf(conductor->prepare("P"));
}

ZVOutcome<> ConductorBench::start() {
    return outcomeOf(conductor->start("S"));
}

ZVOutcome<ZVRecorder::Result> ConductorBench::stop() {
    return outcomeOf(conductor->stop("X"));
}

void ConductorBench::signal(const AbortSignal& signal, std::size_t recorder) {
    recorders[recorder]->signal(signal);
    Activity::waitUntilIdle();
}

std::vector<std::string> ConductorBench::lines() const {
    std::vector<std::string> lines;
    for (const auto& message : log.messages()) {
        lines.push_back(std::string(rawValue(message.level)) + " " + message.message);
    }
    return lines;
}

ZVRecorder::PartialResultError partialResultError(const ZVOutcome<ZVRecorder::Result>& outcome) {
    try {
        outcome.value();
    } catch (const ZVRecorder::PartialResultError& error) {
        return error;
    } catch (...) {
        ADD_FAILURE() << "threw " << debugDescription(std::current_exception());
        throw;
    }
    ADD_FAILURE() << "threw nothing";
    throw std::logic_error("threw nothing");
}

}  // namespace zorvane
