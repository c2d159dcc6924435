#include "Zorvane/Platform/Linux/PipeWire/PipeWirePictureExchange.hpp"

#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "Zorvane/Platform/Foundation/NSError.hpp"

namespace zorvane {

PipeWirePictureExchange::PipeWirePictureExchange() : signal_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!signal_) {
        throw NSError::posix(errno, "make an event");
    }
}

void PipeWirePictureExchange::setCapacity(std::size_t capacity) {
    const MutexLock lock(mutex_);
    capacity_ = std::clamp<std::size_t>(capacity, 1, most);
}

void PipeWirePictureExchange::put(const PipeWirePicture& picture) {
    const MutexLock lock(mutex_);
    if (waitingCount_ == capacity_) {
        giveBack(waiting_.front().buffer);
        std::ranges::move(waiting_.begin() + 1, waiting_.begin() + static_cast<std::ptrdiff_t>(waitingCount_),
                          waiting_.begin());
        --waitingCount_;
        ++dropCount_;
    }
    waiting_[waitingCount_++] = picture;
    changed_.notify_all();
}

std::span<pw_buffer*> PipeWirePictureExchange::takeBack(Buffers& buffers) {
    eventfd_t count = 0;
    eventfd_read(signal_.get(), &count);
    const MutexLock lock(mutex_);
    buffers = returning_;
    return std::span(buffers).first(std::exchange(returningCount_, 0));
}

void PipeWirePictureExchange::withdraw() {
    MutexLock lock(mutex_);
    waitingCount_ = 0;
    while (inHand_) {
        changed_.wait(lock);
    }
    returningCount_ = 0;
}

std::uint64_t PipeWirePictureExchange::takeDropCount() {
    const MutexLock lock(mutex_);
    return std::exchange(dropCount_, 0);
}

std::optional<PipeWirePicture> PipeWirePictureExchange::take() {
    MutexLock lock(mutex_);
    while (waitingCount_ == 0 && !isEnded_) {
        changed_.wait(lock);
    }
    if (isEnded_) {
        return std::nullopt;
    }
    const PipeWirePicture picture = waiting_.front();
    std::ranges::move(waiting_.begin() + 1, waiting_.begin() + static_cast<std::ptrdiff_t>(waitingCount_),
                      waiting_.begin());
    --waitingCount_;
    inHand_ = picture.buffer;
    return picture;
}

void PipeWirePictureExchange::finish() {
    const MutexLock lock(mutex_);
    giveBack(std::exchange(inHand_, nullptr));
    changed_.notify_all();
}

void PipeWirePictureExchange::end() {
    const MutexLock lock(mutex_);
    isEnded_ = true;
    changed_.notify_all();
}

void PipeWirePictureExchange::giveBack(pw_buffer* buffer) {
    if (returningCount_ < returning_.size()) {
        returning_[returningCount_++] = buffer;
        eventfd_write(signal_.get(), 1);
    }
}

}  // namespace zorvane
