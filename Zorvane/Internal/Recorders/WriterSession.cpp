#include "Zorvane/Internal/Recorders/WriterSession.hpp"

#include <utility>

namespace zorvane {

WriterSession::WriterSession(std::shared_ptr<OutputAssetWriters> writers, std::string queueLabel)
    : writers_(std::move(writers)), startingQueue_(DispatchQueue::serial(std::move(queueLabel))) {}

void WriterSession::startIfNeeded(CMTime time) {
    if (!didStart()) {
        startingQueue_.sync([&] { start(time); });
    }
}

void WriterSession::start(CMTime time) {
    if (didStart()) {
        return;
    }
    writers_->audioAssetWriter().startSession(time);
    writers_->videoAssetWriter().startSession(time);
    didStart_.store(true, std::memory_order_release);
}

}  // namespace zorvane
