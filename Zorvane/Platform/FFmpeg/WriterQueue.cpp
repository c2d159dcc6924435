#include "Zorvane/Platform/FFmpeg/WriterQueue.hpp"

#include <utility>

namespace zorvane {

bool WriterQueue::isReadyForMoreMediaData() const {
    const std::lock_guard lock(mutex_);
    return isOpen_ && count_ < capacity;
}

bool WriterQueue::append(const CMSampleBuffer& sampleBuffer) {
    const std::lock_guard lock(mutex_);
    if (!isOpen_ || count_ == capacity) {
        return false;
    }
    samples_[(first_ + count_) % capacity] = sampleBuffer;
    ++count_;
    announce();
    return true;
}

void WriterQueue::markAsFinished() {
    const std::lock_guard lock(mutex_);
    isOpen_ = false;
}

void WriterQueue::open() {
    const std::lock_guard lock(mutex_);
    isOpen_ = true;
}

void WriterQueue::close() {
    const std::lock_guard lock(mutex_);
    isOpen_ = false;
    dropSamples();
    announce();
}

void WriterQueue::startSession(CMTime time) {
    const std::lock_guard lock(mutex_);
    sessionStart_ = time;
    announce();
}

void WriterQueue::endSession(CMTime time) {
    const std::lock_guard lock(mutex_);
    sessionEnd_ = time;
}

void WriterQueue::requestFlush(std::uint64_t fragment) {
    const std::lock_guard lock(mutex_);
    flush_ = fragment;
    announce();
}

void WriterQueue::requestFinish() {
    const std::lock_guard lock(mutex_);
    isOpen_ = false;
    isFinishing_ = true;
    announce();
}

void WriterQueue::requestStop() {
    const std::lock_guard lock(mutex_);
    isOpen_ = false;
    isStopping_ = true;
    announce();
}

WriterQueue::Work WriterQueue::next() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return hasWork(); });
    Work work;
    work.sessionStart = sessionStart_;
    work.sessionEnd = sessionEnd_;
    if (isStopping_ && !isFinishing_) {
        work.kind = Work::Kind::stop;
        dropSamples();
    } else if (flush_) {
        work.kind = Work::Kind::flush;
        work.fragment = *std::exchange(flush_, std::nullopt);
    } else if (hasSample()) {
        work.kind = Work::Kind::sample;
        work.sample = takeSample();
    } else {
        work.kind = Work::Kind::finish;
    }
    work.activity = activity_;
    isOver_ = work.kind == Work::Kind::finish || work.kind == Work::Kind::stop;
    announce();
    return work;
}

CMSampleBuffer WriterQueue::takeSample() {
    CMSampleBuffer sample = std::move(samples_[first_]);
    samples_[first_] = {};
    first_ = (first_ + 1) % capacity;
    --count_;
    return sample;
}

void WriterQueue::dropSamples() {
    while (count_ > 0) {
        takeSample();
    }
}

// Called with the lock held after every change of what there is to do.
void WriterQueue::announce() {
    if (!hasWork()) {
        activity_.reset();
        return;
    }
    if (!activity_) {
        activity_.emplace();
    }
    changed_.notify_one();
}

}  // namespace zorvane
