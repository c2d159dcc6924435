// A movie's file in memory, that fails when it is told to.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Foundation/OutputFile.hpp"

namespace zorvane::testing {

/// What a test sees of a file that another thread writes.
class FileRecord {
  public:
    struct Faults {
        int firstFailing = std::numeric_limits<int>::max();  ///< counted from 1 over all operations
        int lastFailing = std::numeric_limits<int>::max();
    };

    FileRecord() = default;
    explicit FileRecord(Faults faults) : faults_(faults) {}

    template <class Function>
    auto locked(Function function) const {
        const std::lock_guard lock(mutex_);
        return function();
    }

    std::vector<std::byte> bytes() const {
        return locked([this] { return bytes_; });
    }
    /// The sizes that the file had after each whole piece that was appended to it.
    std::vector<std::size_t> boundaries() const {
        return locked([this] { return boundaries_; });
    }
    int operations() const {
        return locked([this] { return operations_; });
    }
    bool isClosed() const {
        return locked([this] { return isClosed_; });
    }

  private:
    friend class MemoryFile;

    bool nextFails() {
        ++operations_;
        return operations_ >= faults_.firstFailing && operations_ <= faults_.lastFailing;
    }

    mutable std::mutex mutex_;
    const Faults faults_;
    std::vector<std::byte> bytes_;
    std::vector<std::size_t> boundaries_;
    int operations_ = 0;
    bool isClosed_ = false;
};

class MemoryFile final : public OutputFile {
  public:
    explicit MemoryFile(std::shared_ptr<FileRecord> record) : record_(std::move(record)) {}
    ~MemoryFile() override {
        record_->locked([this] { record_->isClosed_ = true; });
    }

    void append(std::span<const std::byte> bytes) override {
        perform([&](bool fails) {
            // A full disk takes a part of what it is given.
            const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(fails ? bytes.size() / 2 : bytes.size());
            record_->bytes_.insert(record_->bytes_.end(), bytes.begin(), end);
            if (!fails) {
                record_->boundaries_.push_back(record_->bytes_.size());
            }
        });
    }

    void overwrite(std::uint64_t offset, std::span<const std::byte> bytes) override {
        perform([&](bool fails) {
            if (!fails) {
                std::copy(bytes.begin(), bytes.end(), record_->bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
            }
        });
    }

    void truncate(std::uint64_t size) override {
        perform([&](bool fails) {
            if (!fails) {
                record_->bytes_.resize(size);
            }
        });
    }

    void sync() override {
        perform([](bool) {});
    }

    void close() override {
        perform([this](bool) { record_->isClosed_ = true; });
    }

  private:
    template <class Operation>
    void perform(Operation operation) {
        record_->locked([&] {
            const bool fails = record_->nextFails();
            operation(fails);
            if (fails) {
                throw NSError::posix(ENOSPC, "write to", "memory");
            }
        });
    }

    const std::shared_ptr<FileRecord> record_;
};

}  // namespace zorvane::testing
