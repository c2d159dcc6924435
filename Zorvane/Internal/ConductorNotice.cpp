// The conductor's notices: what recorders say while the recording goes on reaches the host.
#include <utility>

#include "Zorvane/Internal/Conductor.hpp"
#include "Zorvane/Internal/LogPieces.hpp"

namespace zorvane {

NoticeHandler Conductor::makeNoticeHandler() {
    return [weak = weak_from_this()](ZVRecordingNotice notice) {
        auto conductor = weak.lock();
        if (!conductor) {
            return;
        }
        // The job takes the only reference made here, so that no recorder is ever destroyed on its own thread.
        const auto executor = conductor->executor_;
        executor->post([conductor = std::move(conductor), notice = std::move(notice)] { conductor->tellHost(notice); });
    };
}

Task<> Conductor::replaceOnNotice(ZVRecorder::OnNotice handler) {
    onNotice_ = std::move(handler);
    co_return;
}

void Conductor::tellHost(const ZVRecorder::Notice& notice) {
    if (!onNotice_) {
        return;
    }
    try {
        onNotice_(notice);
    } catch (...) {
        logger_.error("The notice handler threw.", errorMetadata(std::current_exception()));
    }
}

}  // namespace zorvane
