#include "RecordOutcome.hpp"

#include <cmath>

namespace zorvane::cli {

double RecordOutcome::duration() const {
    return std::isfinite(statistics.recordUntil) ? statistics.recordUntil - statistics.recordFrom : 0;
}

ExitStatus RecordOutcome::exitStatus() const {
    switch (status) {
        case Status::complete:
            return ExitStatus::complete;
        case Status::partial:
        case Status::aborted:
            return ExitStatus::savedWithErrors;
        case Status::failed:
            break;
    }
    return ExitStatus::nothingRecorded;
}

std::string_view rawValue(RecordOutcome::Status status) {
    switch (status) {
        case RecordOutcome::Status::complete:
            return "complete";
        case RecordOutcome::Status::partial:
            return "partial";
        case RecordOutcome::Status::aborted:
            return "aborted";
        case RecordOutcome::Status::failed:
            break;
    }
    return "failed";
}

std::vector<std::exception_ptr> ungrouped(const std::exception_ptr& error) {
    if (!error) {
        return {};
    }
    try {
        std::rethrow_exception(error);
    } catch (const GroupedErrors& group) {
        return group.errors();
    } catch (const ZVRecorder::PartialResultError& partial) {
        return partial.groupedErrors().errors();
    } catch (...) {
        return {error};
    }
}

}  // namespace zorvane::cli
