#include "Zorvane/Platform/AVFoundation/AVAssetWriter.hpp"

#include <algorithm>
#include <string>
#include <utility>

#include "Zorvane/Platform/Foundation/NSException.hpp"

namespace zorvane {
namespace {

[[noreturn]] void raise(const std::string& reason) {
    throw NSException("NSInternalInconsistencyException", reason);
}

}  // namespace

struct AVAssetWriter::Observer {
    ErrorObserver handler;
};

AVAssetWriter::Status AVAssetWriter::status() const {
    const std::lock_guard lock(mutex_);
    return status_;
}

std::exception_ptr AVAssetWriter::error() const {
    const std::lock_guard lock(mutex_);
    return error_;
}

AVAssetWriter::ErrorObservation AVAssetWriter::observeError(ErrorObserver observer) {
    auto entry = std::make_shared<Observer>(Observer{std::move(observer)});
    const std::lock_guard lock(mutex_);
    std::erase_if(observers_, [](const std::weak_ptr<Observer>& known) { return known.expired(); });
    observers_.push_back(entry);
    return entry;
}

bool AVAssetWriter::canAdd(const AVAssetWriterInput& input) const {
    return canAddInput(input);
}

void AVAssetWriter::add(const std::shared_ptr<AVAssetWriterInput>& input) {
    const std::lock_guard lock(mutex_);
    if (status_ != Status::unknown) {
        raise("Can't add an input to a writer that has started writing.");
    }
    if (!canAddInput(*input)) {
        raise("Can't add an input that this writer refuses, see canAdd.");
    }
    input->attach(addInput(*input));
    inputs_.push_back(input);
}

bool AVAssetWriter::hasInputs() const {
    const std::lock_guard lock(mutex_);
    return !inputs_.empty();
}

bool AVAssetWriter::startWriting() {
    {
        const std::lock_guard lock(mutex_);
        if (status_ != Status::unknown) {
            raise("Can't start a writer twice.");
        }
    }
    try {
        doStartWriting();
    } catch (...) {
        fail(std::current_exception());
        return false;
    }
    const std::lock_guard lock(mutex_);
    if (status_ == Status::unknown) {
        status_ = Status::writing;
    }
    return status_ == Status::writing;
}

void AVAssetWriter::startSession(CMTime time) {
    const std::lock_guard lock(mutex_);
    requireWriting("start a session");
    if (!time.isNumeric()) {
        raise("A session can't start at a time that is no number.");
    }
    if (session_ == Session::none && status_ == Status::writing) {
        session_ = Session::open;
        doStartSession(time);
    }
}

void AVAssetWriter::endSession(CMTime time) {
    const std::lock_guard lock(mutex_);
    requireWriting("end a session");
    if (status_ == Status::failed) {
        return;  // its session may never have started
    }
    if (session_ == Session::none) {
        raise("Can't end a session that hasn't started.");
    }
    if (!time.isNumeric()) {
        raise("A session can't end at a time that is no number.");
    }
    if (session_ == Session::open) {
        session_ = Session::ended;
        doEndSession(time);
    }
}

void AVAssetWriter::finishWriting(Completion completion) {
    {
        const std::lock_guard lock(mutex_);
        requireWriting("finish");
        if (std::exchange(finishing_, true)) {
            raise("Can't finish a writer twice.");
        }
    }
    for (const std::shared_ptr<AVAssetWriterInput>& input : inputs_) {
        input->markAsFinished();
    }
    doFinishWriting([this, completion = std::move(completion)](std::exception_ptr error) {
        finished(std::move(error), completion);
    });
}

void AVAssetWriter::finished(std::exception_ptr error, const Completion& completion) {
    if (error) {
        fail(std::move(error));
    } else {
        const std::lock_guard lock(mutex_);
        if (status_ == Status::writing) {
            status_ = Status::completed;
        }
    }
    completion();
}

void AVAssetWriter::fail(std::exception_ptr error) {
    std::vector<std::shared_ptr<Observer>> observers;
    {
        const std::lock_guard lock(mutex_);
        if (error_ || status_ == Status::completed) {
            return;
        }
        error_ = error;
        status_ = Status::failed;
        for (const std::weak_ptr<Observer>& entry : observers_) {
            if (auto observer = entry.lock()) {
                observers.push_back(std::move(observer));
            }
        }
    }
    for (const std::shared_ptr<Observer>& observer : observers) {
        observer->handler(error);
    }
}

// A failed writer accepts the calls of an orderly end without raising: its error is already known.
void AVAssetWriter::requireWriting(const char* operation) const {
    if (status_ == Status::unknown) {
        raise(std::string("Can't ") + operation + " before writing has started.");
    }
    if (status_ == Status::completed) {
        raise(std::string("Can't ") + operation + " after writing has finished.");
    }
}

}  // namespace zorvane
