#include "Zorvane/Platform/FFmpeg/WriterQueue.hpp"

#include <algorithm>
#include <utility>

namespace zorvane {

/// A ring of samples. All but the sink's functions are called with the queue's lock held.
class WriterQueue::Input final : public AVAssetWriterInputSink {
  public:
    Input(WriterQueue& queue, std::size_t number, AVMediaType mediaType)
        : queue_(queue),
          number_(number),
          isAudio_(mediaType == AVMediaType::audio),
          samples_(isAudio_ ? audioCapacity : videoCapacity) {}

    bool isReadyForMoreMediaData() const override {
        const std::lock_guard lock(queue_.mutex_);
        return canTake();
    }

    bool append(const CMSampleBuffer& sampleBuffer) override {
        const std::lock_guard lock(queue_.mutex_);
        if (!canTake()) {
            return false;
        }
        samples_[(first_ + count_) % samples_.size()] = sampleBuffer;
        ++count_;
        queue_.announce();
        return true;
    }

    void markAsFinished() override {
        const std::lock_guard lock(queue_.mutex_);
        isOpen_ = false;
    }

    void setOpen(bool isOpen) { isOpen_ = isOpen; }
    std::size_t number() const { return number_; }
    bool isAudio() const { return isAudio_; }
    bool hasSample() const { return count_ > 0; }

    CMSampleBuffer takeSample() {
        CMSampleBuffer sample = std::exchange(samples_[first_], {});
        first_ = (first_ + 1) % samples_.size();
        --count_;
        return sample;
    }

  private:
    bool canTake() const { return isOpen_ && count_ < samples_.size(); }

    WriterQueue& queue_;
    const std::size_t number_;
    const bool isAudio_;
    bool isOpen_ = false;
    std::vector<CMSampleBuffer> samples_;
    std::size_t first_ = 0;
    std::size_t count_ = 0;
};

WriterQueue::WriterQueue() = default;
WriterQueue::~WriterQueue() = default;

std::shared_ptr<AVAssetWriterInputSink> WriterQueue::addInput(AVMediaType mediaType) {
    const std::lock_guard lock(mutex_);
    inputs_.push_back(std::make_unique<Input>(*this, inputs_.size(), mediaType));
    return {shared_from_this(), inputs_.back().get()};
}

void WriterQueue::open() {
    const std::lock_guard lock(mutex_);
    for (const auto& input : inputs_) {
        input->setOpen(true);
    }
}

void WriterQueue::close() {
    const std::lock_guard lock(mutex_);
    closeInputs();
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
    closeInputs();
    isFinishing_ = true;
    announce();
}

void WriterQueue::requestStop() {
    const std::lock_guard lock(mutex_);
    closeInputs();
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
        Input& input = nextInput();
        work.kind = Work::Kind::sample;
        work.sample = input.takeSample();
        work.input = input.number();
    } else {
        work.kind = Work::Kind::finish;
    }
    work.activity = activity_;
    isOver_ = work.kind == Work::Kind::finish || work.kind == Work::Kind::stop;
    announce();
    return work;
}

bool WriterQueue::hasSample() const {
    return sessionStart_ && std::ranges::any_of(inputs_, [](const auto& input) { return input->hasSample(); });
}

// Precondition: `hasSample()`.
WriterQueue::Input& WriterQueue::nextInput() const {
    const auto sound =
        std::ranges::find_if(inputs_, [](const auto& input) { return input->isAudio() && input->hasSample(); });
    if (sound != inputs_.end()) {
        return **sound;
    }
    return **std::ranges::find_if(inputs_, [](const auto& input) { return input->hasSample(); });
}

void WriterQueue::closeInputs() {
    for (const auto& input : inputs_) {
        input->setOpen(false);
    }
}

void WriterQueue::dropSamples() {
    for (const auto& input : inputs_) {
        while (input->hasSample()) {
            input->takeSample();
        }
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
