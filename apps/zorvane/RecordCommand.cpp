#include "RecordCommand.hpp"

#include <algorithm>
#include <chrono>
#include <memory>

#include <fmt/format.h>

#include "BundleLocation.hpp"
#include "DisplayChoice.hpp"
#include "Figures.hpp"
#include "LiveLine.hpp"
#include "LogOutput.hpp"
#include "RecordEvents.hpp"
#include "RecordReport.hpp"
#include "RecordSchema.hpp"
#include "Recording.hpp"
#include "StandardError.hpp"
#include "StopSignal.hpp"
#include "WriteAll.hpp"

namespace zorvane::cli {
namespace {

double hostSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Says how the recording is going, as far as the user wants to hear it. `output` lives as long as the process.
class Progress {
  public:
    Progress(const RecordOptions& options, StandardError& output) : options_(options), output_(output) {}

    void began(const std::filesystem::path& bundle) {
        if (!options_.quiet) {
            output_.print(fmt::format("Recording to {}{}", printable(bundle.string()),
                                      options_.seconds ? fmt::format(" for {} s", *options_.seconds) : ""));
        }
        if (options_.keyboard) {  // also when quiet is asked for: who types must be able to know
            output_.print("zorvane: Every key that is pressed is recorded, passwords too.");
        }
    }

    /// What shows the live line; empty where there is none, so that nothing has to wake for it.
    RecordingObserver::Live liveObserver(const std::filesystem::path& bundle) {
        if (options_.quiet || !output_.isTerminal()) {
            return nullptr;
        }
        return [this, bundle](const ZVRecorder::Statistics& statistics) {
            output_.showLive(liveLine(statistics, hostSeconds(), bundleSize(bundle)));
        };
    }

    /// Tells of what befalls a source; may be called on any thread, also when this object is gone.
    ZVRecorder::OnNotice noticeHandler() {
        return [&output = output_](const ZVRecorder::Notice& notice) {
            output.print("zorvane: " + printable(notice.userMessage));
        };
    }

    void ended(const RecordOutcome& outcome) {
        output_.clearLive();
        tellErrors(outcome);
        if (!options_.quiet && outcome.status != RecordOutcome::Status::failed) {
            output_.print(recordSummary(outcome));
        }
    }

  private:
    void tellErrors(const RecordOutcome& outcome) {
        for (const auto& error : outcome.errors) {
            output_.print("zorvane: " + userText(error));
        }
        if (outcome.status == RecordOutcome::Status::failed) {
            if (options_.windowID) {
                output_.print("zorvane: \"zorvane sources windows\" lists the windows and their ids.");
            }
            output_.print("zorvane: Nothing was recorded.");
        } else if (!outcome.errors.empty()) {
            output_.print("zorvane: What could be saved is in " + printable(outcome.result.bundleURL.string()));
        }
        for (const auto& name : unclosedMedia(outcome)) {
            output_.print(fmt::format("zorvane: {} could not be closed; it plays up to where it was cut off.",
                                      printable((outcome.result.bundleURL / name).string())));
        }
        if (!options_.logLevel && std::ranges::any_of(outcome.errors, &isUnexplained)) {
            output_.print("zorvane: " + whereTheLogIs());
        }
    }

    const RecordOptions& options_;
    StandardError& output_;
};

using Events = std::shared_ptr<RecordEvents>;  // null unless they are wanted; segments may come on other threads

RecordOutcome recordInto(const std::filesystem::path& bundle, const RecordOptions& options, const Events& events,
                         Progress& progress) {
    const auto end = std::make_shared<RecordingEnd>();
    const StopSignal signal([end] { end->requestStop(); });
    RecordingObserver observer{.live = progress.liveObserver(bundle)};
    observer.notice = [events, tell = progress.noticeHandler()](const ZVRecorder::Notice& notice) {
        tell(notice);
        if (events) {
            events->notice(notice);
        }
    };
    SegmentHandler onSegment;
    if (events) {
        observer.started = [events, bundle](double recordFrom) { events->started(bundle, recordFrom); };
        onSegment = [events](const std::filesystem::path& segment) { events->segment(segment); };
    }
    Recording recording(schemaItems(options, onSegment, end->stopToken()), bundle, end);
    progress.began(bundle);
    return recording.run(options.seconds, observer);
}

RecordOutcome outcomeOf(const RecordOptions& options, const Events& events, Progress& progress) {
    RecordOutcome outcome;
    try {
        ZVPlatform::use(options.platform);
        outcome.result.bundleURL = bundleLocation(options.output);
        outcome = recordInto(outcome.result.bundleURL, options, events, progress);
        if (outcome.status == RecordOutcome::Status::failed) {
            discard(outcome);
        }
    } catch (...) {
        outcome.errors = ungrouped(std::current_exception());
    }
    return outcome;
}

}  // namespace

ExitStatus record(const RecordOptions& options) {
    StopSignal::block();
    // Never destroyed: threads of the library may log while the process exits.
    static auto& output = *new StandardError;
    const auto log = showLog(options.logLevel, output);
    Progress progress(options, output);
    Events events = options.events ? std::make_shared<RecordEvents>() : nullptr;
    const RecordOutcome outcome = outcomeOf(options, events, progress);
    progress.ended(outcome);
    if (events) {
        events->ended(outcome);
    } else if (options.json) {
        printResult(recordJSON(outcome, JSONForm::indented));
    } else if (outcome.status != RecordOutcome::Status::failed) {
        printResult(outcome.result.bundleURL.string() + "\n");
    }
    return outcome.exitStatus();
}

}  // namespace zorvane::cli
