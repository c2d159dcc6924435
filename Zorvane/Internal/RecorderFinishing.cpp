#include "Zorvane/Internal/RecorderFinishing.hpp"

#include <iterator>
#include <stop_token>
#include <typeinfo>
#include <utility>

#include "Zorvane/Internal/Concurrency/TaskGroup.hpp"
#include "Zorvane/Internal/TypeName.hpp"
#include "Zorvane/ZVError.hpp"

namespace zorvane {
namespace {

template <class Element>
void append(std::vector<Element>& list, std::vector<Element>& more) {
    std::move(more.begin(), more.end(), std::back_inserter(list));
}

Task<FinishedRecorders> finishOne(std::shared_ptr<Recorder> recorder, Logger logger) {
    FinishedRecorders finished;
    try {
        finished.files = co_await recorder->finish();
    } catch (...) {
        finished.errors.push_back(std::current_exception());
        logger.error("Internal recorder failed to stop.", [&] {
            const Recorder& failed = *recorder;
            return LogMetadata{{"recorderType", unqualifiedTypeName(typeid(failed))},
                               {"recorderID", failed.id()},
                               {"error", debugDescription(finished.errors.front())}};
        });
    }
    co_return finished;
}

}  // namespace

Task<FinishedRecorders> finishAll(Recorders recorders, Logger logger) {
    TaskGroup<FinishedRecorders> group{std::stop_token()};
    for (const auto& recorder : recorders) {
        group.add(finishOne(recorder, logger));
    }
    std::vector<FinishedRecorders> each = co_await std::move(group).results();
    FinishedRecorders all;
    for (FinishedRecorders& one : each) {
        append(all.files, one.files);
        append(all.errors, one.errors);
    }
    co_return all;
}

}  // namespace zorvane
