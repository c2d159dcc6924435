#include "Recording.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <system_error>
#include <utility>

#include "BundleLocation.hpp"
#include "UserError.hpp"

namespace zorvane::cli {
namespace {

using Clock = std::chrono::steady_clock;  // the library's host clock, under its C++ name

constexpr auto observationInterval = std::chrono::milliseconds(200);

Clock::time_point hostTime(double seconds) {
    return Clock::time_point(std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds)));
}

/// Whether the library found the bundle directory there already, and so has not touched it.
bool wasTaken(const std::exception_ptr& error) {
    return ZVError::_uncaught(error).errorGroup().starts_with(
        "invalidConfiguration: Provided outputDirectory already exists");
}

}  // namespace

Recording::Recording(std::vector<ZVRecorder::SchemaItem> items, const std::filesystem::path& bundle,
                     std::shared_ptr<RecordingEnd> end)
    : bundle_(bundle),
      end_(std::move(end)),
      recorder_(std::move(items), bundle, std::nullopt,
                [end = end_](const ZVRecorder::AbortReason& reason) { end->abort(reason); }) {}

RecordOutcome Recording::run(std::optional<double> seconds, const RecordingObserver& observer) {
    try {
        recorder_.setNoticeHandler(observer.notice).get();
        start();
    } catch (const ZVCancelled&) {
        return failed(std::make_exception_ptr(stoppedBeforeStart()));
    } catch (...) {
        return failed(std::current_exception());
    }
    if (observer.started) {
        observer.started(recorder_.statistics().recordFrom);
    }
    waitForEnd(seconds, observer.live);
    return stop();
}

void Recording::start() {
    recorder_.prepare().get(end_->stopToken());
    if (end_->isStopRequested()) {
        recorder_.stop().get();
        throw ZVCancelled();
    }
    recorder_.start().get();
}

void Recording::waitForEnd(std::optional<double> seconds, const RecordingObserver::Live& live) {
    const double from = recorder_.statistics().recordFrom;
    const auto deadline = seconds ? hostTime(from + *seconds) : Clock::time_point::max();
    auto next = live ? std::min(Clock::now(), deadline) : deadline;
    while (!end_->waitUntil(next) && Clock::now() < deadline) {
        if (live) {
            live(recorder_.statistics());
        }
        next = std::min(Clock::now() + observationInterval, deadline);
    }
}

RecordOutcome Recording::stop() {
    RecordOutcome outcome;
    try {
        outcome.result = recorder_.stop().get();
        outcome.status = RecordOutcome::Status::complete;
    } catch (const ZVRecorder::PartialResultError& error) {
        outcome.result = error.result();
        outcome.errors = error.groupedErrors().errors();
        outcome.status = RecordOutcome::Status::partial;
    }
    const auto abort = end_->abortReason();
    if (abort && abort->kind() != ZVRecorder::AbortReason::Kind::userStopped) {
        outcome.status = RecordOutcome::Status::aborted;
        outcome.result = abort->result();
        outcome.errors = ungrouped(abort->error());
    }
    outcome.statistics = recorder_.statistics();
    if (!holdsMedia(bundle_)) {
        outcome.status = RecordOutcome::Status::failed;
    }
    return outcome;
}

RecordOutcome Recording::failed(const std::exception_ptr& error) {
    RecordOutcome outcome;
    outcome.result = {bundle_, ZVBundleInfo::empty};
    outcome.errors = ungrouped(error);
    if (const auto abort = end_->abortReason()) {
        outcome.errors = ungrouped(abort->error());
    }
    return outcome;
}

void discard(const RecordOutcome& outcome) {
    if (std::ranges::none_of(outcome.errors, &wasTaken)) {
        std::error_code error;
        std::filesystem::remove_all(outcome.result.bundleURL, error);
    }
}

}  // namespace zorvane::cli
